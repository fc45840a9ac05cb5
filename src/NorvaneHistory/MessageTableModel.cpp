#include "NorvaneHistory/MessageTableModel.h"

#include "NorvaneHistory/HistoryTexts.h"
#include "foundation/Globals.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

MessageTableModel::MessageTableModel(QList<qint32> captions, QObject *parent)
    : QAbstractTableModel(parent), m_captions(std::move(captions))
{}

int MessageTableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_captions.size());
}

QVariant MessageTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= m_captions.size())
        return {};
    return GS(m_captions.at(section));
}

QString MessageTableModel::commonText(int column, const QString &at, const QString &phone,
                                      const QString &text)
{
    switch (column) {
    case Moment:
        return HistoryTexts::moment(at);
    case Phone:
        return HistoryTexts::oneLine(phone);
    case Message:
        return HistoryTexts::oneLine(text);
    default:
        return {};
    }
}

QVariant MessageTableModel::dataOfUnfetched(int column, int role)
{
    return role == Qt::DisplayRole && column == Moment ? u"…"_s : QVariant();
}

} // namespace norvane
