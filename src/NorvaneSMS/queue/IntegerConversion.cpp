#include "NorvaneSMS/queue/IntegerConversion.h"

#include "common/FailureNumbers.h"

#include <QByteArray>
#include <QString>

#include <cmath>
#include <limits>

namespace {

[[noreturn]] void raise(Failure::Number number)
{
    Failure::raise(number, QStringLiteral("toInteger16"));
}

bool isBlank(QChar character)
{
    return character == u' ' || (character >= u'\t' && character <= u'\r');
}

QStringView withoutBlanksAround(QStringView text)
{
    while (!text.isEmpty() && isBlank(text.front()))
        text = text.sliced(1);
    while (!text.isEmpty() && isBlank(text.back()))
        text.chop(1);
    return text;
}

bool isDigit(QChar character)
{
    return character >= u'0' && character <= u'9';
}

/// Takes a sign or parentheses off `text`.
/// @return whether they mean a minus
bool takeSign(QStringView &text)
{
    if (text.size() >= 2 && text.front() == u'(' && text.back() == u')') {
        text = withoutBlanksAround(text.sliced(1).chopped(1));
        return true;
    }
    if (text.isEmpty())
        return false; // no number, whatever the sign
    const auto isSign = [](QChar character) { return character == u'+' || character == u'-'; };
    const bool inFront = isSign(text.front());
    if (!inFront && !isSign(text.back()))
        return false;
    const bool minus = (inFront ? text.front() : text.back()) == u'-';
    text = withoutBlanksAround(inFront ? text.sliced(1) : text.chopped(1));
    return minus;
}

qsizetype takeDigits(QStringView &text)
{
    qsizetype count = 0;
    while (count < text.size() && isDigit(text[count]))
        ++count;
    text = text.sliced(count);
    return count;
}

/// Whether `text` is digits, a fraction and an exponent, the last two of which may be missing.
bool isDecimal(QStringView text)
{
    qsizetype digits = takeDigits(text);
    if (text.startsWith(u'.') || text.startsWith(u',')) {
        text = text.sliced(1);
        digits += takeDigits(text);
    }
    if (digits == 0)
        return false;
    if (text.isEmpty())
        return true;
    if (!QStringView(u"eEdD").contains(text.front()))
        return false;
    text = text.sliced(1);
    if (text.startsWith(u'+') || text.startsWith(u'-'))
        text = text.sliced(1);
    return takeDigits(text) > 0 && text.isEmpty();
}

double toDouble(QStringView decimal)
{
    QByteArray form = decimal.toLatin1();
    form.replace(',', '.').replace('d', 'e').replace('D', 'e').replace('E', 'e');
    bool fits = false;
    const double number = form.toDouble(&fits);
    if (fits)
        return number;
    return form.contains("e-") ? 0 : std::numeric_limits<double>::infinity();
}

/// Rounds to the nearest whole number, a half to the even one.
double rounded(double number)
{
    const double lower = std::floor(number);
    const double over = number - lower;
    if (over < 0.5)
        return lower;
    if (over > 0.5)
        return lower + 1;
    return std::fmod(lower, 2) == 0 ? lower : lower + 1;
}

/// The digits of `text`, which begins with "&", as the bits of a number.
qint16 fromOtherBase(QStringView text)
{
    text = text.sliced(1);
    int base = 8;
    if (text.startsWith(u'h', Qt::CaseInsensitive) || text.startsWith(u'o', Qt::CaseInsensitive)) {
        base = text.front().toLower() == u'h' ? 16 : 8;
        text = text.sliced(1);
    }
    quint32 bits = 0;
    if (text.isEmpty())
        raise(Failure::TypeMismatch);
    for (const QChar character : text) {
        const qsizetype digit = QStringView(u"0123456789abcdef").indexOf(character.toLower());
        if (digit < 0 || digit >= base)
            raise(Failure::TypeMismatch);
        bits = bits * static_cast<quint32>(base) + static_cast<quint32>(digit);
        if (bits > std::numeric_limits<quint16>::max())
            raise(Failure::Overflow);
    }
    return static_cast<qint16>(static_cast<quint16>(bits));
}

} // namespace

qint16 toInteger16(QStringView text)
{
    text = withoutBlanksAround(text);
    // Nearly all that comes is plain digits, few enough to fit.
    if (!text.isEmpty() && text.size() <= 4) {
        QStringView rest = text;
        if (takeDigits(rest); rest.isEmpty()) {
            int number = 0;
            for (const QChar digit : text)
                number = number * 10 + digit.unicode() - u'0';
            return static_cast<qint16>(number);
        }
    }
    if (text.startsWith(u'&'))
        return fromOtherBase(text);
    const bool minus = takeSign(text);
    if (!isDecimal(text))
        raise(Failure::TypeMismatch);
    const double number = rounded(minus ? -toDouble(text) : toDouble(text));
    if (!(number >= std::numeric_limits<qint16>::min() &&
          number <= std::numeric_limits<qint16>::max()))
        raise(Failure::Overflow);
    return static_cast<qint16>(number);
}
