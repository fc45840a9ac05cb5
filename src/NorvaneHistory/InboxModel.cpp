#include "NorvaneHistory/InboxModel.h"

#include "NorvaneHistory/HistoryTexts.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QFont>
#include <QGuiApplication>

#include <algorithm>
#include <array>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString textOf(const ReceivedMessage &row, int column)
{
    switch (column) {
    case InboxModel::Moment:
        return HistoryTexts::moment(row.at);
    case InboxModel::Phone:
        return HistoryTexts::oneLine(row.phone);
    case InboxModel::Message:
        return HistoryTexts::oneLine(row.text);
    default:
        return {};
    }
}

} // namespace

InboxModel::InboxModel(HistorySource &source, QObject *parent)
    : PagedTableModel(parent), m_source(source)
{}

void InboxModel::setFilter(const InboxFilter &filter)
{
    if (filter == m_filter)
        return;
    m_filter = filter;
    reload();
}

void InboxModel::markRead(int at)
{
    const ReceivedMessage *const opened = row(at);
    if (!opened || opened->isRead)
        return;
    ReceivedMessage read = *opened;
    read.isRead = true;
    update({read});
    m_source.markRead({read.id});
}

int InboxModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(columns);
}

QVariant InboxModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const ReceivedMessage *const shown = row(index.row());
    if (!shown)
        return role == Qt::DisplayRole && index.column() == Moment ? u"…"_s : QVariant();
    switch (role) {
    case Qt::DisplayRole:
        return textOf(*shown, index.column());
    case Qt::AccessibleTextRole:
        // A weight can't be heard.
        return index.column() == Moment && !shown->isRead
                   ? GS(TextId::UnreadMoment, textOf(*shown, Moment))
                   : textOf(*shown, index.column());
    case Qt::FontRole: {
        QFont font = QGuiApplication::font();
        font.setBold(!shown->isRead);
        return font;
    }
    default:
        return {};
    }
}

QVariant InboxModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    static constexpr std::array<qint32, columns> captions = {
        TextId::MomentColumn, TextId::SenderColumn, TextId::MessageColumn};
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 ||
        section >= columns)
        return {};
    return GS(captions.at(static_cast<std::size_t>(section)));
}

void InboxModel::fetchPage(const PageRequest &request, const Answer &answer)
{
    m_source.fetchInbox(this, m_filter, request, answer);
}

void InboxModel::complete(QList<ReceivedMessage> &top, bool isWhole) const
{
    if (!m_filter.unreadOnly || (top.isEmpty() && !isWhole))
        return;
    const qint64 least = isWhole ? 0 : top.constLast().id;
    forEachHeld([&](const ReceivedMessage &row) {
        if (row.isRead && row.id > least)
            top.append(row);
    });
    std::sort(top.begin(), top.end(), [](const ReceivedMessage &one, const ReceivedMessage &other) {
        return one.id > other.id;
    });
}

void InboxModel::loaded(const SourceResult<Page<ReceivedMessage>> &page)
{
    if (page)
        Q_EMIT reloaded();
    else
        Q_EMIT reloadFailed(page.error());
}

} // namespace norvane
