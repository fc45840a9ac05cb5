#include "TovekSMService/store/QueueNews.h"

#include "TovekSMService/store/QueueJournal.h"

#include <QStringList>

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

QString QueueNews::ofAll()
{
    return u"*"_s;
}

QString QueueNews::ofHistory()
{
    return u"history"_s;
}

QString QueueNews::of(QList<qint64> ids)
{
    std::sort(ids.begin(), ids.end());
    QString news;
    for (qsizetype first = 0; first < ids.size();) {
        qsizetype last = first;
        while (last + 1 < ids.size() && ids.at(last + 1) <= ids.at(last) + 1)
            ++last;
        if (!news.isEmpty())
            news += u',';
        news += QString::number(ids.at(first));
        if (ids.at(last) != ids.at(first))
            news += u'-' + QString::number(ids.at(last));
        first = last + 1;
    }
    return news.size() > maxBytes ? ofAll() : news;
}

std::optional<QList<qint64>> QueueNews::idsOf(const QString &news)
{
    QList<qint64> ids;
    const QStringList ranges = news.split(u',', Qt::SkipEmptyParts);
    for (const QString &range : ranges) {
        const qsizetype dash = range.indexOf(u'-');
        bool isFirst = false;
        bool isLast = false;
        const qint64 first = range.left(dash).toLongLong(&isFirst);
        const qint64 last = dash < 0 ? first : range.mid(dash + 1).toLongLong(&isLast);
        const bool isRange = isFirst && (isLast || dash < 0) && first <= last;
        if (!isRange || last - first >= QueueJournal::maxNotes - ids.size())
            return std::nullopt;
        for (qint64 id = first; id <= last; ++id)
            ids.append(id);
    }
    return ids;
}

} // namespace norvane
