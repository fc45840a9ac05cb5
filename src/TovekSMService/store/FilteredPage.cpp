#include "TovekSMService/store/FilteredPage.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A pattern of LIKE for what contains the text as it is.
QString containing(const QString &text)
{
    QString pattern = text;
    for (const QChar special : {u'\\', u'%', u'_'})
        pattern.replace(special, u"\\"_s + special);
    return u'%' + pattern + u'%';
}

} // namespace

QVariantList filteredPage(const MessageFilter &filter, qint64 offset, qint64 limit)
{
    const QString pattern = containing(filter.text);
    return {filter.from, filter.to, filter.to, filter.text, pattern, pattern, limit, offset};
}

} // namespace norvane
