#include "gsm-simulator/TextCoding.h"

#include "gsm-simulator/GsmAlphabet.h"
#include "gsm-simulator/PduDecoder.h"

#include <QByteArrayList>
#include <QStringDecoder>

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

constexpr auto notAscii = [](char c) { return (c & 0x80) != 0; };

const QByteArrayList &characterSets()
{
    static const QByteArrayList names{"GSM", "UCS2", "IRA", "8859-1", "UTF-8", "HEX"};
    return names;
}

std::optional<QString> fromUcs2Digits(const QByteArray &digits)
{
    const std::optional<QByteArray> octets = octetsOfHexadecimal(digits);
    if (!octets || octets->size() % 2 != 0)
        return std::nullopt;
    QString text;
    for (qsizetype i = 0; i < octets->size(); i += 2)
        text += QChar(static_cast<uchar>(octets->at(i + 1)), static_cast<uchar>(octets->at(i)));
    return text;
}

std::optional<QString> fromSeptets(const QByteArray &septets)
{
    if (std::any_of(septets.begin(), septets.end(), notAscii))
        return std::nullopt;
    return textOfSeptets(septets);
}

std::optional<QString> fromUtf8(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = decoder(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

bool isNumber(const QString &text)
{
    constexpr qsizetype maxDigits = 20;
    const QString digits = text.startsWith(u'+') ? text.mid(1) : text;
    static constexpr std::u16string_view allowed = u"0123456789*#";
    return !digits.isEmpty() && digits.size() <= maxDigits &&
           std::all_of(digits.begin(), digits.end(), [](QChar digit) {
               return allowed.find(digit.unicode()) != std::u16string_view::npos;
           });
}

} // namespace

bool isCharacterSet(const QByteArray &name)
{
    return characterSets().contains(name);
}

QByteArray characterSetList()
{
    return "(\"" + characterSets().join("\",\"") + "\")";
}

std::optional<QString> fromCharacterSet(const QByteArray &bytes, const QByteArray &characterSet)
{
    if (characterSet == "UCS2")
        return fromUcs2Digits(bytes);
    if (characterSet == "8859-1")
        return QString::fromLatin1(bytes);
    if (characterSet == "UTF-8")
        return fromUtf8(bytes);
    if (characterSet == "GSM")
        return fromSeptets(bytes);
    if (characterSet == "HEX") {
        const std::optional<QByteArray> septets = octetsOfHexadecimal(bytes);
        return septets ? fromSeptets(*septets) : std::nullopt;
    }
    if (std::any_of(bytes.begin(), bytes.end(), notAscii))
        return std::nullopt;
    return QString::fromLatin1(bytes);
}

QByteArray inCharacterSet(const QString &text, const QByteArray &characterSet)
{
    if (characterSet == "UTF-8")
        return text.toUtf8();
    QByteArray bytes;
    for (const QChar character : text) {
        if (characterSet == "UCS2") {
            bytes += QByteArray::number(character.unicode(), 16).rightJustified(4, '0').toUpper();
        } else if (characterSet == "GSM" || characterSet == "HEX") {
            bytes += septetsOfText(character).value_or("?"_ba);
        } else {
            const char16_t max = characterSet == "8859-1" ? 0xFF : 0x7F;
            bytes += character.unicode() <= max ? character.toLatin1() : '?';
        }
    }
    return characterSet == "HEX" ? bytes.toHex().toUpper() : bytes;
}

std::optional<QString> numberFromCharacterSet(const QByteArray &bytes,
                                              const QByteArray &characterSet)
{
    const std::optional<QString> text = fromCharacterSet(bytes, characterSet);
    if (text && isNumber(*text))
        return text;
    const QString plain = QString::fromLatin1(bytes);
    return isNumber(plain) ? std::optional(plain) : std::nullopt;
}

} // namespace simulator

} // namespace norvane
