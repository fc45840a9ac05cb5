#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace norvane {

/// Readers of answer lines. They take the lines of an answer as they came and give nothing, or an
/// empty text, for what they can't read.
namespace AnswerParsers {

using Lines = QList<QByteArray>;

/// What stands behind "tag:" in the first line that begins so.
std::optional<QByteArray> behindTag(const Lines &lines, QByteArrayView tag);
/// The fields behind "tag:", parted by commas outside quotes, each without blanks and quotes.
QList<QByteArray> fields(const Lines &lines, QByteArrayView tag);

/// What a device says that it takes (the answer to "AT+X=?"): for each argument the values between
/// its parentheses, without quotes, ranges as they stand.
QList<QList<QByteArray>> textLists(const Lines &lines, QByteArrayView tag);
/// The same for numbers, ranges of 256 values at most written out; what is no number is left out.
QList<QList<int>> valueLists(const Lines &lines, QByteArrayView tag);

/// Free text (3GPP TS 27.007, 5.1 to 5.3): the first line, without a tag and quotes.
QString freeText(const Lines &lines);
/// +CGSN (27.007, 5.4): the first run of 14 to 17 digits.
QString imei(const Lines &lines);
/// The SIM's number: 18 to 22 digits, whatever stands before them, without filling, and turned
/// round where the device shows the file's bytes as they lie there (3GPP TS 31.102, 4.2.1).
QString iccid(const Lines &lines);
/// +COPS? (27.007, 7.3): the operator as it is told.
QString operatorName(const Lines &lines);
/// +CREG? or +CEREG? (27.007, 7.2 and 10.1.22): the state, -1 if it isn't told.
int registration(const Lines &lines, QByteArrayView tag);
/// Whether a state of registration lets messages go.
bool isRegistered(int state);
/// "Norvane Mobile (home)".
QString networkInfo(const QString &operatorName, int registration);
/// +CFUN? (27.007, 8.2): the level of functionality, -1 if it isn't told.
int functionality(const Lines &lines);
/// +CSQ (27.007, 8.5): percent of 0 to 31, -1 if not known.
int signal(const Lines &lines);
/// +CBC (27.007, 8.4): percent, -1 if not known.
int battery(const Lines &lines);
/// +CPIN? (27.007, 8.3), in upper case.
QByteArray pinState(const Lines &lines);
/// +CPINR (27.007, 8.65) or ^CPIN: how often the PIN may still be tried.
std::optional<int> pinTries(const Lines &lines);
/// +CMGS (27.005, 3.5.1): the message reference.
std::optional<int> messageReference(const Lines &lines);

} // namespace AnswerParsers

} // namespace norvane
