#pragma once

#include <QString>

// How the values of cells are written. docs/import.md tells the rules.

namespace CellText {

/// Up to 15 significant digits, without an exponent below 1E15; nothing for what is no number.
QString ofNumber(double value);

QString ofBoolean(bool value);

/// A day as "yyyy-mm-dd", with its time, if it has one, as "hh:mm:ss" behind it.
QString ofDateTime(int year, int month, int day, int hour, int minute, double second);

/// The moment that a serial number of days stands for; below one day it is a time alone. A number
/// outside the years 1900 to 9999 is written as a number.
/// @param from1904  day 0 is 1904-01-01, else day 1 is 1900-01-01
QString ofSerial(double days, bool from1904);

/// Whether a number format writes its numbers as a date or a time.
bool isDateFormat(qsizetype identifier, const QString &code);

} // namespace CellText
