#include "console/QueueGridModel.h"

#include <QDateTime>

#include <utility>

QueueGridModel::QueueGridModel(const QLocale &locale, QObject *parent)
    : QAbstractTableModel(parent), m_locale(locale)
{}

void QueueGridModel::bind(QueueRecordSet records)
{
    beginResetModel();
    m_records = std::move(records);
    endResetModel();
}

void QueueGridModel::setHeaders(const QStringList &headers)
{
    m_headers = headers;
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
}

int QueueGridModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_records.count());
}

int QueueGridModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QString QueueGridModel::cell(const QueueRow &row, int column) const
{
    switch (column) {
    case DeliveryDate: {
        // Date and time apart, as no rule of a zone applies to them.
        const QDate date = QDate::fromString(row.deliveryDate.left(10), Qt::ISODate);
        const QTime time = QTime::fromString(row.deliveryDate.mid(11), Qt::ISODate);
        if (!date.isValid() || !time.isValid())
            return row.deliveryDate; // a date that came in odd is shown as it came
        return m_locale.toString(date, QLocale::ShortFormat) + u' ' +
               m_locale.toString(time, QLocale::ShortFormat);
    }
    case Phone:
        return row.phone;
    case Message:
        return row.message;
    default:
        return {};
    }
}

QVariant QueueGridModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_records.count())
        return {};
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole)
        return cell(m_records.at(index.row()), index.column());
    return {};
}

QVariant QueueGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return m_headers.value(section);
    return {};
}
