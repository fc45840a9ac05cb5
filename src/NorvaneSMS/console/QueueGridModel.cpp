#include "NorvaneSMS/console/QueueGridModel.h"

#include "NorvaneSMS/console/PlainTip.h"
#include "NorvaneSMS/engine/EventTexts.h"

#include <QDateTime>

#include <algorithm>
#include <utility>

namespace norvane {

namespace {

/// When a message is due. Invalid for a date in an unknown form.
QDateTime momentOf(const QueueRow &row)
{
    // Date and time apart, as no rule of a zone applies to them.
    const QDate date = QDate::fromString(row.deliveryDate.left(10), Qt::ISODate);
    const QTime time = QTime::fromString(row.deliveryDate.mid(11), Qt::ISODate);
    return time.isValid() ? QDateTime(date, time, Qt::UTC) : QDateTime();
}

} // namespace

QueueGridModel::QueueGridModel(const QLocale &locale, QObject *parent)
    : QAbstractTableModel(parent), m_locale(locale)
{}

void QueueGridModel::bind(QueueRecordSet records)
{
    beginResetModel();
    m_records = std::move(records);
    endResetModel();
}

void QueueGridModel::removeRows(const QList<int> &rows)
{
    if (rows.isEmpty())
        return;
    // One reset for all: signalling each row separately takes seconds for thousands of them.
    beginResetModel();
    m_records.removeRows(QList<qsizetype>(rows.cbegin(), rows.cend()));
    endResetModel();
}

int QueueGridModel::rowOf(qint64 id) const
{
    const QList<QueueRow> &rows = m_records.rows();
    const auto found = std::find_if(rows.cbegin(), rows.cend(),
                                    [id](const QueueRow &row) { return row.id == id; });
    return found == rows.cend() ? -1 : static_cast<int>(found - rows.cbegin());
}

void QueueGridModel::setHeaders(const QStringList &headers)
{
    if (m_headers == headers)
        return;
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

QString QueueGridModel::cell(const QueueRow &row, int column, Extent extent) const
{
    switch (column) {
    case DeliveryDate: {
        const QDateTime moment = momentOf(row);
        if (!moment.isValid())
            return row.deliveryDate; // a date in an unknown form is shown as it is
        return extent == Extent::Whole ? EventTexts::wholeMoment(moment, m_locale)
                                       : EventTexts::sentMoment(moment, m_locale);
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
    const QueueRow &row = m_records.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
        return cell(row, index.column(), Extent::Column);
    case Qt::ToolTipRole:
        return plainTip(cell(row, index.column(), Extent::Whole));
    case idRole:
        return row.id;
    default:
        return {};
    }
}

bool QueueGridModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (!index.isValid() || index.row() >= m_records.count() || role != Qt::EditRole)
        return false;
    if (index.column() == Phone)
        m_records.setPhone(index.row(), value.toString());
    else if (index.column() == Message)
        m_records.setMessage(index.row(), value.toString());
    else
        return false;
    Q_EMIT dataChanged(index, index);
    return true;
}

Qt::ItemFlags QueueGridModel::flags(const QModelIndex &index) const
{
    const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
    // The delivery date of a message that waits can't be changed.
    return index.column() == DeliveryDate ? flags : flags | Qt::ItemIsEditable;
}

QVariant QueueGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return m_headers.value(section);
    return {};
}

} // namespace norvane
