#pragma once

#include "engine/contract/QueueRecordSet.h"

#include <QAbstractTableModel>
#include <QLocale>

/// The rows of grdQueue: the record set that it is bound to.
class QueueGridModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { DeliveryDate, Phone, Message, ColumnCount };

    explicit QueueGridModel(const QLocale &locale, QObject *parent = nullptr);

    /// Binds the grid to `records`; every row is a new one.
    void bind(QueueRecordSet records);
    const QueueRecordSet &records() const { return m_records; }

    void setHeaders(const QStringList &headers);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    QString cell(const QueueRow &row, int column) const;

    QLocale m_locale;
    QueueRecordSet m_records;
    QStringList m_headers;
};
