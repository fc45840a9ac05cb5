#pragma once

#include <QString>
#include <QtGlobal>

namespace norvane {

// How the values of cells are written, alike from each kind of workbook. docs/import.md tells the
// rules. A second that has begun by half is written as a whole one.

namespace CellText {

/// Up to 15 significant digits, without an exponent below 1E15; nothing for what is no number.
QString ofNumber(double value);

QString ofBoolean(bool value);

/// A day, or a day and a time, in the notation of ISO 8601; nothing for what is none. The day in
/// front of 1900-01-01, which is written as either of two, stands for none: the time is alone.
QString ofMoment(const QString &moment);

/// Hours, minutes and seconds as "hh:mm:ss"; the hours go on beyond 24.
QString ofDuration(double seconds);

/// What a number format makes of its numbers.
enum class Kind : quint8 { Number, Date, Time };

/// The kind of a number format; a date may have a time.
/// @param identifier  tells it, if there is no `code`
Kind kindOf(qsizetype identifier, const QString &code);

/// A number of days, as a cell of that kind has it. A date outside the years 1900 to 9999 is
/// written as a number, and below one day as a time alone.
/// @param from1904  day 0 is 1904-01-01, else day 1 is 1900-01-01
QString ofDays(double days, Kind kind, bool from1904);

} // namespace CellText

} // namespace norvane
