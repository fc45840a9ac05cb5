#pragma once

#include <QAbstractTableModel>
#include <QList>

namespace norvane {

/// The rows of grdSentDetails: what was reported in this run of the program. Rows are only added.
class SentGridModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    enum Column { Moment, Phone, Message, ColumnCount };
    enum class Outcome : quint8 { Sent, Failed };

    struct Row
    {
        QString moment;
        QString phone;
        QString message;
        Outcome outcome;
    };

    using QAbstractTableModel::QAbstractTableModel;

    void add(const Row &row);
    void setHeaders(const QStringList &headers);
    /// The word that screen readers add to the rows that are shown in red.
    void setFailedWord(const QString &word) { m_failedWord = word; }

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    static QVariant failedData(int role, const QString &word);
    static QString cell(const Row &row, int column);

    QList<Row> m_rows;
    QStringList m_headers;
    QString m_failedWord;
};

} // namespace norvane
