#pragma once

#include "gsm-simulator/AtInterpreter.h"

#include <QDateTime>
#include <QString>

namespace norvane {

namespace simulator {

/// One line of JSON (with its line end) that tells a part: `number`, `text`, `pdu`, `time` (local,
/// with milliseconds), `coding` ("gsm7", "8bit", "ucs2") and `reference` (what +CMGS answered).
/// A part of a concatenated message also has `concatenation` (the reference that its parts share),
/// `part` (from 1) and `parts`: the text of the whole is that of its parts in this order.
/// Characters that are half of a pair stand as escapes, so that joining parts joins pairs.
QByteArray jsonLine(const AcceptedMessage &message, const QDateTime &time);

/// The file that accepted messages are appended to. Each line leaves in one write, without a
/// buffer, so that a reader sees whole lines only.
class MessageLog
{
public:
    MessageLog() = default;
    ~MessageLog();
    MessageLog(const MessageLog &) = delete;
    MessageLog &operator=(const MessageLog &) = delete;

    /// @return what went wrong, empty if nothing
    QString open(const QString &path);

    /// @return what went wrong, empty if nothing
    QString append(const QByteArray &line);

private:
    int m_file = -1;
    QString m_path;
};

} // namespace simulator

} // namespace norvane
