#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QDateTime>
#include <QString>

namespace norvane {

/// A drop file is records laid end to end and nothing else. Each is one byte a character, in the
/// ANSI code page:
///
/// | Offset | Length | Field         | Content                                     |
/// |--------|--------|---------------|---------------------------------------------|
/// | 0      | 25     | phone         | as given, filled with spaces                |
/// | 25     | 14     | delivery date | "DDMMYYYYHHNNSS"                            |
/// | 39     | 160    | message       | the normalised text, filled with spaces     |
namespace QueueDropFile {

inline constexpr qint16 phoneLength = 25;
inline constexpr qint16 dateLength = 14;
inline constexpr qint16 messageLength = 160;
inline constexpr qint16 recordLength = phoneLength + dateLength + messageLength;

/// What drop files are searched by.
inline constexpr char16_t pattern[] = u"sms.*";

/// The name of the drop file of a number.
QString fileName(qint16 number);

struct Record
{
    QString phone;
    QDateTime deliveryDate; ///< a moment without a zone, in Qt::UTC
    QString message;

    bool operator==(const Record &) const = default;
};

/// The bytes of one record.
/// @param record  with its message already normalised
QByteArray encode(const Record &record);

/// What one record says: the phone without spaces and "-", the message without spaces around it.
///
/// Day, month, hour, minute and second that are out of range carry over as a calendar does. The
/// years 0 to 29 are 2000 to 2029, and 30 to 99 are 1930 to 1999, before anything carries over.
/// @param bytes  of exactly recordLength
/// @throws NumberedFailure 13 or 6 for a date field that doesn't convert to a number of 16 bits
///         (see toInteger16), 5 for a year below 0 and a moment before the year 100 or past 9999
Record decode(QByteArrayView bytes);

} // namespace QueueDropFile

/// Cuts `text`, or fills it on its right, to exactly `width` characters.
/// @param width    a width below 0 counts as 0
/// @param padChar  character code of the fill
QString PadField(const QString &text, qint16 width, char16_t padChar);

} // namespace norvane
