#include "common/SettingsText.h"

#include <QStringDecoder>

#include <algorithm>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

bool isPlainNameUnit(QChar unit)
{
    const char16_t code = unit.unicode();
    return (code >= u'a' && code <= u'z') || (code >= u'A' && code <= u'Z') ||
           (code >= u'0' && code <= u'9') || code == u'_' || code == u'-' || code == u'.';
}

bool isHexDigit(QChar unit)
{
    const char16_t code = unit.toLower().unicode();
    return (code >= u'0' && code <= u'9') || (code >= u'a' && code <= u'f');
}

/// A section's or key's name with everything unusual as "%XX" or "%UXXXX".
QString escapedName(const QString &name)
{
    QString text;
    for (const QChar unit : name) {
        if (isPlainNameUnit(unit))
            text += unit;
        else if (unit.unicode() <= 0xFF)
            text += u"%%1"_s.arg(unit.unicode(), 2, 16, QChar(u'0')).toUpper();
        else
            text += u"%U%1"_s.arg(unit.unicode(), 4, 16, QChar(u'0')).toUpper();
    }
    return text;
}

bool names(QStringView text, const QString &name)
{
    return text == name || text == escapedName(name);
}

bool isControl(QChar unit)
{
    return unit.unicode() < 0x20 || unit.unicode() == 0x7F;
}

bool needsQuotes(const QString &value)
{
    if (value.isEmpty())
        return false;
    if (value.front().isSpace() || value.back().isSpace())
        return true;
    return std::ranges::any_of(value, [](QChar unit) {
        return isControl(unit) || QStringView(u"\\\",;=").contains(unit);
    });
}

QString escapedUnit(QChar unit)
{
    switch (unit.unicode()) {
    case u'\n':
        return u"\\n"_s;
    case u'\r':
        return u"\\r"_s;
    case u'\t':
        return u"\\t"_s;
    case u'"':
        return u"\\\""_s;
    case u'\\':
        return u"\\\\"_s;
    default:
        return u"\\x"_s + QString::number(unit.unicode(), 16);
    }
}

QString escapedValue(const QString &value)
{
    const QString text = value.startsWith(u'@') ? u'@' + value : value;
    if (!needsQuotes(text))
        return text;
    QString quoted(u'"');
    bool afterNumber = false; // a digit behind "\x1f" would be read as part of the number
    for (const QChar unit : text) {
        const bool escape =
            isControl(unit) || unit == u'"' || unit == u'\\' || (afterNumber && isHexDigit(unit));
        const QString part = escape ? escapedUnit(unit) : QString(unit);
        afterNumber = part.startsWith(u"\\x");
        quoted += part;
    }
    return quoted + u'"';
}

/// The unit that the escape at the front of `text`, behind its backslash, stands for.
QChar takeEscape(QStringView &text)
{
    const QChar letter = text.front();
    text = text.sliced(1);
    switch (letter.unicode()) {
    case u'n':
        return u'\n';
    case u'r':
        return u'\r';
    case u't':
        return u'\t';
    case u'x': {
        qsizetype digits = 0;
        while (digits < 4 && digits < text.size() && isHexDigit(text[digits]))
            ++digits;
        const QChar unit(text.first(digits).toUShort(nullptr, 16));
        text = text.sliced(digits);
        return unit;
    }
    default:
        return letter;
    }
}

QString unescaped(QStringView text)
{
    QString plain;
    while (!text.isEmpty()) {
        const QChar unit = text.front();
        text = text.sliced(1);
        plain += unit == u'\\' && !text.isEmpty() ? takeEscape(text) : unit;
    }
    return plain;
}

QString plainValue(QStringView raw)
{
    const QStringView text = raw.trimmed();
    const bool quoted = text.size() >= 2 && text.startsWith(u'"') && text.endsWith(u'"');
    const QString plain = quoted ? unescaped(text.sliced(1, text.size() - 2)) : text.toString();
    return plain.startsWith(u"@@") ? plain.sliced(1) : plain;
}

bool isSection(QStringView line)
{
    return line.size() >= 2 && line.startsWith(u'[') && line.endsWith(u']');
}

bool isComment(QStringView line)
{
    return line.isEmpty() || line.startsWith(u';') || line.startsWith(u'#');
}

bool isReadable(QStringView line)
{
    return isComment(line) || isSection(line) || line.indexOf(u'=') > 0;
}

} // namespace

std::optional<SettingsText> SettingsText::parse(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringConverter::Utf8);
    QString text = decoder(bytes);
    if (decoder.hasError() || text.contains(QChar::Null))
        return std::nullopt;

    SettingsText settings;
    text.replace(u"\r\n"_s, u"\n"_s);
    settings.m_lines = text.split(u'\n');
    if (settings.m_lines.last().isEmpty())
        settings.m_lines.removeLast();
    for (const QString &line : std::as_const(settings.m_lines)) {
        if (!isReadable(QStringView(line).trimmed()))
            return std::nullopt;
    }
    return settings;
}

SettingsText::Place SettingsText::find(const QString &section, const QString &key) const
{
    Place place;
    bool inSection = false;
    for (qsizetype i = 0; i < m_lines.size(); ++i) {
        const QStringView line = QStringView(m_lines.at(i)).trimmed();
        if (isSection(line))
            inSection = names(line.sliced(1, line.size() - 2).trimmed(), section);
        if (!inSection || line.isEmpty())
            continue;
        place.lastLine = i;
        const qsizetype equals = line.indexOf(u'=');
        if (equals > 0 && !isComment(line) && !isSection(line) &&
            names(line.first(equals).trimmed(), key))
            place.line = i;
    }
    return place;
}

std::optional<QString> SettingsText::value(const QString &section, const QString &key) const
{
    const Place place = find(section, key);
    if (place.line < 0)
        return std::nullopt;
    const QStringView line = m_lines.at(place.line);
    return plainValue(line.sliced(line.indexOf(u'=') + 1));
}

void SettingsText::setValue(const QString &section, const QString &key, const QString &value)
{
    const QString line = escapedName(key) + u'=' + escapedValue(value);
    const Place place = find(section, key);
    if (place.line >= 0) {
        m_lines[place.line] = line;
    } else if (place.lastLine >= 0) {
        m_lines.insert(place.lastLine + 1, line);
    } else {
        if (!m_lines.isEmpty())
            m_lines.append(QString());
        m_lines.append(u'[' + escapedName(section) + u']');
        m_lines.append(line);
    }
}

QByteArray SettingsText::bytes() const
{
    return m_lines.isEmpty() ? QByteArray() : (m_lines.join(u'\n') + u'\n').toUtf8();
}

} // namespace norvane
