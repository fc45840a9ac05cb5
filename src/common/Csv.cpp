#include "common/Csv.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

bool isPhoneNumber(const QString &text)
{
    return text.size() > 1 && text.front() == u'+' &&
           std::all_of(text.cbegin() + 1, text.cend(),
                       [](QChar unit) { return unit >= u'0' && unit <= u'9'; });
}

bool looksLikeFormula(const QString &text)
{
    static const QString beginnings = u"=+-@\uFF1D\uFF0B\uFF0D\uFF20"_s;
    if (text.isEmpty() || isPhoneNumber(text))
        return false;
    if (text.front() == u'\t' || text.front() == u'\r' || text.front() == u'\n')
        return true;
    const QString begun = text.trimmed();
    return !begun.isEmpty() && beginnings.contains(begun.front());
}

} // namespace

QString Csv::field(const QString &text)
{
    QString field = looksLikeFormula(text) ? u'\'' + text : text;
    const bool needsQuotes = std::any_of(field.cbegin(), field.cend(), [](QChar unit) {
        return unit == u',' || unit == u'"' || unit == u'\r' || unit == u'\n' || unit == u';' ||
               unit == u'\t';
    });
    if (!needsQuotes)
        return field;
    field.replace(u'"', u"\"\""_s);
    return u'"' + field + u'"';
}

} // namespace norvane
