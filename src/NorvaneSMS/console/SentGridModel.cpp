#include "NorvaneSMS/console/SentGridModel.h"

#include "NorvaneSMS/console/PlainTip.h"
#include "foundation/ui/Contrast.h"

#include <QColor>
#include <QGuiApplication>

namespace norvane {

void SentGridModel::add(const Row &row)
{
    const int at = static_cast<int>(m_rows.size());
    beginInsertRows({}, at, at);
    m_rows.append(row);
    endInsertRows();
}

void SentGridModel::setHeaders(const QStringList &headers)
{
    m_headers = headers;
    Q_EMIT headerDataChanged(Qt::Horizontal, 0, ColumnCount - 1);
}

int SentGridModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int SentGridModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ColumnCount;
}

QVariant SentGridModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_rows.size())
        return {};
    const Row &row = m_rows.at(index.row());
    if (role == Qt::DisplayRole)
        return cell(row, index.column());
    if (role == Qt::ToolTipRole)
        return plainTip(cell(row, index.column()));
    return row.outcome == Outcome::Failed ? failedData(role, m_failedWord) : QVariant();
}

QVariant SentGridModel::failedData(int role, const QString &word)
{
    switch (role) {
    case Qt::ForegroundRole:
        return QColor(255, 0, 0);
    case Qt::BackgroundRole:
        return Contrast::plainGround(QGuiApplication::palette());
    case Qt::AccessibleDescriptionRole:
        return word;
    default:
        return {};
    }
}

QString SentGridModel::cell(const Row &row, int column)
{
    switch (column) {
    case Moment:
        return row.moment;
    case Phone:
        return row.phone;
    case Message:
        return row.message;
    default:
        return {};
    }
}

QVariant SentGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return m_headers.value(section);
    return {};
}

} // namespace norvane
