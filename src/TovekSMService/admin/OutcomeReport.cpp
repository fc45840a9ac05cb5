#include "TovekSMService/admin/OutcomeReport.h"

#include "TovekSMService/log/OneLine.h"
#include "contract/ErrorCodes.h"

#include <QDate>
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

QString csvHeader()
{
    return u"at,delivery date,phone,outcome,code,reference,message\r\n"_s;
}

QString outcomeWord(qint32 code)
{
    return code == ErrorCode::ok ? u"sent"_s : u"failed"_s;
}

} // namespace

std::optional<OutcomeReport::Format> OutcomeReport::formatNamed(const QString &name)
{
    if (name == "text"_L1)
        return Format::Text;
    if (name == "csv"_L1)
        return Format::Csv;
    return std::nullopt;
}

std::optional<QString> OutcomeReport::moment(const QString &text)
{
    const QDate date = QDate::fromString(text.left(dayLength), u"yyyy-MM-dd"_s);
    if (!date.isValid())
        return std::nullopt;
    if (text.size() == dayLength)
        return text;
    const QTime time = QTime::fromString(text.mid(dayLength), u"'T'HH:mm:ss"_s);
    return time.isValid() ? std::optional(text) : std::nullopt;
}

QString OutcomeReport::csvField(const QString &text)
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

QString OutcomeReport::line(const OutcomeRow &row, Format format)
{
    const QStringList fields = {row.at,
                                row.deliveryDate,
                                row.phone,
                                outcomeWord(row.code),
                                QString::number(row.code),
                                row.reference,
                                row.text};
    QStringList written;
    for (const QString &field : fields)
        written << (format == Format::Csv ? csvField(field) : onOneLine(field));
    if (format == Format::Text)
        return written.join(u'\t') + u'\n';
    // The code is a number of our own, and a failure's begins with a minus sign.
    written[4] = fields[4];
    return written.join(u',') + u"\r\n"_s;
}

StoreResult<> OutcomeReport::write(const StoreReader &store, const QString &since, Format format,
                                   QTextStream &out)
{
    if (format == Format::Csv)
        out << csvHeader();
    return store.outcomes(since, [&](const OutcomeRow &row) { out << line(row, format); });
}

} // namespace norvane
