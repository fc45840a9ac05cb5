#pragma once

#include <QString>

namespace norvane {

/// How two spellings of a telephone number are told to be the same.
namespace PhoneNumber {

/// The form in which numbers are compared: the digits with "*" and "#", without the prefix of the
/// country, however that is written ("+34", "0034"), and without anything else.
/// @param countryPrefix  digits; empty for none
QString key(const QString &phone, const QString &countryPrefix);

/// Whether a network may mean the number `sent` when it reports about `reported`: the digits are
/// the same, or one of the two has a prefix in front of what is the other, of at least seven
/// digits.
bool isSameRecipient(const QString &sent, const QString &reported);

} // namespace PhoneNumber

} // namespace norvane
