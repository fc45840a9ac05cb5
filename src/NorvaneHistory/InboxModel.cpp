#include "NorvaneHistory/InboxModel.h"

#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QFont>
#include <QGuiApplication>
#include <QHash>

#include <algorithm>

namespace norvane {

InboxModel::InboxModel(HistorySource &source, QObject *parent)
    : PagedTableModel({TextId::MomentColumn, TextId::SenderColumn, TextId::MessageColumn}, parent),
      m_source(source)
{}

void InboxModel::markRead(int at)
{
    const ReceivedMessage *const opened = row(at);
    if (!opened || opened->isRead)
        return;
    ReceivedMessage read = *opened;
    read.isRead = true;
    update({read});
    m_source.markRead(this, {read.id}, [this, read](const SourceResult<bool> &marked) {
        if (marked)
            return;
        ReceivedMessage unread = read;
        unread.isRead = false;
        update({unread});
        Q_EMIT changeFailed(marked.error());
    });
}

QVariant InboxModel::dataOf(const ReceivedMessage &row, int column, int role) const
{
    const QString text = commonText(column, row.at, row.phone, row.text);
    switch (role) {
    case Qt::DisplayRole:
        return text;
    case Qt::AccessibleTextRole:
        // A weight can't be heard.
        return column == Moment && !row.isRead ? GS(TextId::UnreadMoment, text) : text;
    case Qt::FontRole: {
        QFont font = QGuiApplication::font();
        font.setBold(!row.isRead);
        return font;
    }
    default:
        return {};
    }
}

void InboxModel::fetchPage(const PageRequest &request, const Answer &answer)
{
    m_source.fetchInbox(this, filter(), request, answer);
}

void InboxModel::complete(QList<ReceivedMessage> &top, bool isWhole) const
{
    QHash<qint64, qsizetype> fetched;
    for (qsizetype at = 0; at < top.size(); ++at)
        fetched.insert(top.at(at).id, at);
    const bool keepsRead = filter().unreadOnly && (isWhole || !top.isEmpty());
    const qint64 least = isWhole || top.isEmpty() ? 0 : top.constLast().id;
    forEachHeld([&](const ReceivedMessage &row) {
        if (!row.isRead)
            return;
        // It may have been read since it was asked for.
        if (const auto at = fetched.constFind(row.id); at != fetched.cend())
            top[*at].isRead = true;
        else if (keepsRead && row.id > least)
            top.append(row);
    });
    std::sort(top.begin(), top.end(), [](const ReceivedMessage &one, const ReceivedMessage &other) {
        return one.id > other.id;
    });
}

} // namespace norvane
