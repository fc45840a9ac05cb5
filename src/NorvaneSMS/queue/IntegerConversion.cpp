#include "NorvaneSMS/queue/IntegerConversion.h"

#include "common/FailureNumbers.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

[[noreturn]] void raise(Failure::Number number)
{
    Failure::raise(number, u"toInteger16"_s);
}

/// What converts, between blanks: the digits of a hexadecimal or octal number; or a decimal number
/// in parentheses, behind a sign, or in front of one.
QRegularExpression form()
{
    const QString blanks = u"[ \\t-\\r]*"_s;
    const QString number =
        u"(?<number>(?:[0-9]+(?:[.,][0-9]*)?|[.,][0-9]+)(?:[EeDd][+-]?[0-9]+)?)"_s;
    return QRegularExpression(QRegularExpression::anchoredPattern(
        blanks + u"(?:&[Hh](?<hex>[0-9A-Fa-f]+)|&[Oo]?(?<octal>[0-7]+)|"_s + u"(?<signed>(?|\\("_s +
        blanks + number + blanks + u"\\)|[+-]?"_s + blanks + number + u'|' + number + blanks +
        u"[+-])))"_s + blanks));
}

/// The digits as the bits of a number.
qint16 fromBits(const QString &digits, int base)
{
    bool fits = false;
    const quint16 bits = digits.toUShort(&fits, base);
    if (!fits)
        raise(Failure::Overflow);
    return static_cast<qint16>(bits);
}

qint16 fromDecimal(const QString &number, bool minus)
{
    const QString plain = number.toLower().replace(u',', u'.').replace(u'd', u'e');
    const double exact = plain.toDouble(); // infinite where even this type doesn't hold it
    const double whole = std::rint(minus ? -exact : exact); // of a half, the even one
    if (whole < std::numeric_limits<qint16>::min() || whole > std::numeric_limits<qint16>::max())
        raise(Failure::Overflow);
    return static_cast<qint16>(whole);
}

} // namespace

qint16 toInteger16(QStringView text)
{
    // Nearly all that comes is plain digits, few enough to fit.
    const auto isDigit = [](QChar character) { return character >= u'0' && character <= u'9'; };
    if (!text.isEmpty() && text.size() <= 4 && std::ranges::all_of(text, isDigit))
        return text.toShort();

    static const QRegularExpression converting = form();
    const QRegularExpressionMatch match = converting.match(text.toString());
    if (!match.hasMatch())
        raise(Failure::TypeMismatch);
    if (match.hasCaptured(u"hex"))
        return fromBits(match.captured(u"hex"), 16);
    if (match.hasCaptured(u"octal"))
        return fromBits(match.captured(u"octal"), 8);
    const QStringView whole = match.capturedView(u"signed");
    const bool minus = whole.startsWith(u'(') || whole.startsWith(u'-') || whole.endsWith(u'-');
    return fromDecimal(match.captured(u"number"), minus);
}

} // namespace norvane
