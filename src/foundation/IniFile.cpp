#include "foundation/IniFile.h"

#include "common/CodePages.h"
#include "common/platform/PlatformFiles.h"

#include <QStringDecoder>

#include <optional>

namespace norvane {

namespace {

constexpr qsizetype maxValueLength = 512;
constexpr qint64 maxIniBytes = 16 * 1024 * 1024;

bool isBlank(QChar unit)
{
    return unit == u' ' || unit == u'\t';
}

QStringView withoutTrailingBlanks(QStringView text)
{
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

QStringView trimmed(QStringView text)
{
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    return withoutTrailingBlanks(text);
}

QStringView withoutQuotes(QStringView text)
{
    const bool quoted = text.size() >= 2 && text.front() == text.back() &&
                        (text.front() == u'"' || text.front() == u'\'');
    return quoted ? text.sliced(1, text.size() - 2) : text;
}

QString decoded(const QByteArray &bytes)
{
    if (const auto mark = QStringConverter::encodingForData(bytes))
        return QStringDecoder(*mark)(bytes);
    QStringDecoder utf8(QStringConverter::Utf8);
    const QString text = utf8(bytes);
    return utf8.hasError() ? CodePages::fromAnsi(bytes) : text;
}

bool isSame(QStringView name, const QString &wanted)
{
    return trimmed(name).compare(trimmed(wanted), Qt::CaseInsensitive) == 0;
}

/// The name between the brackets, nothing if `line` opens no section.
std::optional<QStringView> sectionName(QStringView line)
{
    if (!line.startsWith(u'['))
        return std::nullopt;
    const qsizetype end = line.lastIndexOf(u']');
    return end < 0 ? line.sliced(1) : line.sliced(1, end - 1);
}

std::optional<QStringView> findValue(QStringView text, const QString &section, const QString &key)
{
    bool inSection = false;
    while (!text.isEmpty()) {
        qsizetype end = 0;
        while (end < text.size() && text[end] != u'\n' && text[end] != u'\r')
            ++end;
        const QStringView line = trimmed(text.first(end));
        text = text.sliced(qMin(end + 1, text.size()));

        if (const auto name = sectionName(line)) {
            if (inSection)
                return std::nullopt;
            inSection = isSame(*name, section);
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (!inSection || equals < 0 || line.startsWith(u';'))
            continue;
        if (isSame(line.first(equals), key))
            return withoutQuotes(trimmed(line.sliced(equals + 1)));
    }
    return std::nullopt;
}

} // namespace

QString ReadIniValue(const QString &section, const QString &key, const QString &defaultValue,
                     const QString &path)
{
    QByteArray bytes;
    QString text;
    if (platformFiles().read(path, maxIniBytes, bytes) == 0)
        text = decoded(bytes);
    const QStringView value =
        findValue(text, section, key).value_or(withoutTrailingBlanks(defaultValue));
    const qsizetype nul = value.indexOf(QChar::Null);
    return value.first(qMin(nul < 0 ? value.size() : nul, maxValueLength)).toString();
}

} // namespace norvane
