#include "TovekSMService/admin/ReportLines.h"

#include "TovekSMService/log/OneLine.h"
#include "common/Csv.h"

#include <QDate>
#include <QStringList>
#include <QTime>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype dayLength = 10; // "yyyy-MM-dd"

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

QString ReportLines::line(const QList<Field> &fields, Format format)
{
    QStringList written;
    for (const Field &field : fields) {
        if (format == Format::Text)
            written << onOneLine(field.text);
        else
            written << (field.isOurs ? field.text : Csv::field(field.text));
    }
    return format == Format::Text ? written.join(u'\t') + u'\n'
                                  : written.join(u',') + QString::fromUtf16(Csv::lineEnd);
}

} // namespace norvane
