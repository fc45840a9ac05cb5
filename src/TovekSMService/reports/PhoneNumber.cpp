#include "TovekSMService/reports/PhoneNumber.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString digitsOf(const QString &phone)
{
    QString digits;
    for (const QChar character : phone)
        if ((character >= u'0' && character <= u'9') || character == u'*' || character == u'#')
            digits += character;
    return digits;
}

} // namespace

QString PhoneNumber::key(const QString &phone, const QString &countryPrefix)
{
    const bool international = phone.trimmed().startsWith(u'+');
    QString digits = digitsOf(phone);
    if (digits.isEmpty())
        return phone.trimmed().toCaseFolded(); // a sender that has a name
    const bool dialled = !international && digits.startsWith("00"_L1);
    if (dialled)
        digits.remove(0, 2);
    if (!international && !dialled) {
        // Lists often have the prefix without its plus sign; what follows is a whole number then.
        constexpr qsizetype minNational = 9;
        const bool isPrefixed = !countryPrefix.isEmpty() && digits.startsWith(countryPrefix) &&
                                digits.size() - countryPrefix.size() >= minNational;
        return isPrefixed ? digits.mid(countryPrefix.size()) : digits;
    }
    if (!countryPrefix.isEmpty() && digits.startsWith(countryPrefix))
        return digits.mid(countryPrefix.size());
    return u'+' + digits;
}

bool PhoneNumber::isSameRecipient(const QString &sent, const QString &reported)
{
    constexpr qsizetype minDigits = 7;
    const QString one = digitsOf(sent);
    const QString other = digitsOf(reported);
    if (one == other)
        return !one.isEmpty();
    const QString &longer = one.size() > other.size() ? one : other;
    const QString &shorter = one.size() > other.size() ? other : one;
    return shorter.size() >= minDigits && longer.size() > shorter.size() &&
           longer.endsWith(shorter);
}

} // namespace norvane
