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

/// At which one spreadsheet or another begins a cell: where the comma is the decimal sign, lists
/// are often parted by semicolons, and the quotes in the middle of a cell count for nothing.
bool endsCell(QChar unit)
{
    return unit == u',' || unit == u';' || unit == u'\t' || unit == u'\r' || unit == u'\n';
}

/// What may be read as the beginning of a cell, without the quotes around it.
QString unquoted(const QString &text)
{
    const auto isBefore = [](QChar unit) { return unit == u'"' || unit.isSpace(); };
    const auto begin = std::find_if_not(text.cbegin(), text.cend(), isBefore);
    return QString(begin, text.cend() - begin);
}

QString guarded(const QString &text)
{
    QString result = looksLikeFormula(text) ? u"'"_s : QString();
    for (qsizetype begin = 0; begin <= text.size();) {
        const auto end = std::find_if(text.cbegin() + begin, text.cend(), endsCell);
        const QString cell = text.mid(begin, end - text.cbegin() - begin);
        if (begin > 0 && looksLikeFormula(unquoted(cell)))
            result += u'\'';
        result += cell;
        begin += cell.size() + 1;
        if (end != text.cend())
            result += *end;
    }
    return result;
}

} // namespace

QString Csv::field(const QString &text)
{
    QString field = guarded(text);
    const bool needsQuotes = std::any_of(field.cbegin(), field.cend(),
                                         [](QChar unit) { return unit == u'"' || endsCell(unit); });
    if (!needsQuotes)
        return field;
    field.replace(u'"', u"\"\""_s);
    return u'"' + field + u'"';
}

} // namespace norvane
