#include "foundation/XmlText.h"

#include "common/CodePages.h"

#include <QRegularExpression>
#include <QStringDecoder>

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

std::optional<QString> decodedUnicode(const QByteArray &bytes, QStringConverter::Encoding encoding)
{
    QStringDecoder decoder(encoding);
    QString text = decoder(bytes);
    // The decoder holds back an unfinished character and would report it with the next bytes only.
    text += decoder(QByteArrayView("\0\0", encoding == QStringConverter::Utf8 ? 1 : 2));
    if (decoder.hasError() || !text.endsWith(QChar::Null))
        return std::nullopt;
    text.chop(1);
    return text.isValidUtf16() ? std::optional(text) : std::nullopt;
}

QByteArray declaredEncoding(const QByteArray &bytes)
{
    static const QRegularExpression declaration(
        u"^<\\?xml\\s[^>]*?\\sencoding\\s*=\\s*[\"']([A-Za-z0-9._-]+)[\"']"_s);
    const auto match = declaration.match(QString::fromLatin1(bytes.first(qMin(bytes.size(), 512))));
    return match.captured(1).toLatin1().toLower();
}

bool isAscii(const QByteArray &bytes)
{
    return std::ranges::all_of(bytes, [](char byte) { return static_cast<quint8>(byte) < 0x80; });
}

} // namespace

std::optional<QString> decodedXml(const QByteArray &bytes)
{
    if (bytes.startsWith("\xEF\xBB\xBF"))
        return decodedUnicode(bytes.sliced(3), QStringConverter::Utf8);
    if (bytes.startsWith("\xFF\xFE"))
        return decodedUnicode(bytes.sliced(2), QStringConverter::Utf16LE);
    if (bytes.startsWith("\xFE\xFF"))
        return decodedUnicode(bytes.sliced(2), QStringConverter::Utf16BE);
    if (bytes.startsWith(QByteArrayView("<\0", 2)))
        return decodedUnicode(bytes, QStringConverter::Utf16LE);
    if (bytes.startsWith(QByteArrayView("\0<", 2)))
        return decodedUnicode(bytes, QStringConverter::Utf16BE);

    const QByteArray encoding = declaredEncoding(bytes);
    if (encoding.isEmpty() || encoding == "utf-8" || encoding == "utf8")
        return decodedUnicode(bytes, QStringConverter::Utf8);
    if (encoding == "windows-1252" || encoding == "cp1252")
        return CodePages::fromAnsi(bytes);
    if (encoding == "iso-8859-1" || encoding == "latin1")
        return QString::fromLatin1(bytes);
    if (encoding == "us-ascii" && isAscii(bytes))
        return QString::fromLatin1(bytes);
    return std::nullopt;
}

} // namespace norvane
