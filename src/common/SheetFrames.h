#pragma once

#include "common/NumberedFailure.h"
#include "common/Result.h"
#include "common/SpreadsheetConnection.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace norvane {

// The protocol between the console and its sheet reader over a pair of pipes: frames of a 32-bit
// length and a body. Each question is answered by one frame.

namespace SheetFrames {

/// Maximum length of a frame's body, in bytes.
inline constexpr quint32 maxBytes = 64 << 20;

enum class Operation : quint8 { Open, Describe, Values };

struct Question
{
    Operation operation = Operation::Open;
    QString name;     ///< the file's path, or the sheet
    QString field;    ///< of Values
    qint32 first = 0; ///< of Values: the first row wanted, counted from 0
};

/// What an answer holds depends on the operation: the sheets; fields and count of rows; values of
/// rows, at least one of them.
struct Answer
{
    QStringList names;
    qint32 rows = 0;
    QList<std::optional<QString>> values;
};

/// What is sent back: the answer, or the failure that the console is to raise.
using Reply = Result<Answer, NumberedFailure>;

/// A frame with its length in front.
QByteArray framed(const QByteArray &body);
/// The length in the first four bytes of a frame.
quint32 bodyLength(QByteArrayView fourBytes);

QByteArray encode(const Question &question);
QByteArray encode(const Reply &reply);
/// Nothing, if `body` isn't one.
std::optional<Question> decodeQuestion(const QByteArray &body);
std::optional<Reply> decodeReply(const QByteArray &body);

} // namespace SheetFrames

} // namespace norvane
