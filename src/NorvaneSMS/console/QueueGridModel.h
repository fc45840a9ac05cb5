#pragma once

#include "contract/QueueRecordSet.h"

#include <QAbstractTableModel>
#include <QLocale>

namespace norvane {

/// The rows of grdQueue: the record set that it is bound to. What is edited or removed here is
/// edited or removed there.
class QueueGridModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { DeliveryDate, Phone, Message, ColumnCount };
    /// The id of the row's message.
    static constexpr int idRole = Qt::UserRole;

    explicit QueueGridModel(const QLocale &locale, QObject *parent = nullptr);

    /// Binds the grid to `records`; every row is a new one.
    void bind(QueueRecordSet records);
    const QueueRecordSet &records() const { return m_records; }
    /// The record set was handed back: the changes so far aren't handed back again.
    void forgetChanges() { m_records.forgetChanges(); }
    /// Removes these rows of the model, in this order; each number is the one that it has now.
    void removeRows(const QList<int> &rows);
    using QAbstractTableModel::removeRows;

    /// The row of this message in the model; -1 if it isn't there.
    int rowOf(qint64 id) const;

    void setHeaders(const QStringList &headers);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    enum class Extent : quint8 {
        Column, ///< what the column has room for
        Whole
    };

    QString cell(const QueueRow &row, int column, Extent extent) const;

    QLocale m_locale;
    QueueRecordSet m_records;
    QStringList m_headers;
};

} // namespace norvane
