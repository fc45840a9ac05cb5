#pragma once

#include <QStringView>

namespace norvane {

/// The whole number of 16 bits that `text` converts to, as the suite's language converts. It takes
///
/// - digits, with or without a fraction behind a point or a comma and an exponent behind "E" or
///   "D": "07", "1,5", ".5", "1E3". A fraction is rounded to the nearest whole number, a half to
///   the even one;
/// - one sign, before or behind: "-5", "+5", "5-"; or parentheses for a minus: "(5)";
/// - hexadecimal digits behind "&H" and octal ones behind "&O" or "&", without a sign;
/// - blanks (spaces, tabs, line ends) around all that, and between sign and digits.
///
/// A text without digits, blanks between digits, and any other character don't convert.
/// @throws NumberedFailure 13 for what doesn't convert, 6 for what 16 bits don't hold
qint16 toInteger16(QStringView text);

} // namespace norvane
