#include "TovekSMService/admin/ReportLines.h"

#include "TovekSMService/log/OneLine.h"

#include <QDate>
#include <QStringList>
#include <QTime>

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype dayLength = 10; // "yyyy-MM-dd"

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

std::optional<ReportLines::Format> ReportLines::formatNamed(const QString &name)
{
    if (name == "text"_L1)
        return Format::Text;
    if (name == "csv"_L1)
        return Format::Csv;
    return std::nullopt;
}

std::optional<QString> ReportLines::moment(const QString &text)
{
    const QDate date = QDate::fromString(text.left(dayLength), u"yyyy-MM-dd"_s);
    if (!date.isValid())
        return std::nullopt;
    if (text.size() == dayLength)
        return text;
    const QTime time = QTime::fromString(text.mid(dayLength), u"'T'HH:mm:ss"_s);
    return time.isValid() ? std::optional(text) : std::nullopt;
}

QString ReportLines::csvField(const QString &text)
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

QString ReportLines::line(const QList<Field> &fields, Format format)
{
    QStringList written;
    for (const Field &field : fields) {
        if (format == Format::Text)
            written << onOneLine(field.text);
        else
            written << (field.isOurs ? field.text : csvField(field.text));
    }
    return format == Format::Text ? written.join(u'\t') + u'\n' : written.join(u',') + u"\r\n"_s;
}

} // namespace norvane
