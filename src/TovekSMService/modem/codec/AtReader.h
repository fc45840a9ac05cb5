#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <optional>

namespace norvane {

/// The final result of a command (ITU-T V.250, 5.7.1; 3GPP TS 27.005, 3.2.5; 27.007, 9.2).
struct AtResult
{
    enum class Kind {
        Ok,
        Error,        ///< ERROR without a reason
        CmeError,     ///< +CME ERROR, with a number or a text
        CmsError,     ///< +CMS ERROR, with a number or a text
        NotSupported, ///< the device says in words that it doesn't know the command
        CallEnded,    ///< NO CARRIER, BUSY and the like, only in answer to a dialling command
    };

    Kind kind = Kind::Ok;
    /// The number behind +CME ERROR or +CMS ERROR, -1 if there is none.
    int number = -1;
    /// What stood behind the colon.
    QByteArray text;
};

/// One thing that a device said.
struct AtToken
{
    enum class Kind {
        Echo,        ///< the command or the payload, sent back
        Information, ///< a line of the answer to the command in progress
        Final,       ///< the end of the command in progress
        Prompt,      ///< the device waits for the payload
        Unsolicited, ///< said by itself, or without a command in progress
    };

    Kind kind = Kind::Information;
    QByteArray line;
    AtResult result;
};

/// Makes tokens of the bytes of a device, in whatever pieces they arrive. NUL, control characters
/// and bytes above 127 are dropped; a line is cut at `maxLine` bytes.
///
/// Tokens are pulled, because what a line means depends on the command that is in progress when it
/// is looked at: `append` the bytes, then call `next` until it gives nothing.
class AtReader
{
public:
    static constexpr int maxLine = 2048;

    /// Tells which command the following lines answer.
    /// @param command  without its carriage return
    /// @param prefixes further names that lines of the answer begin with, without colon, for
    ///                 commands whose answer carries another name than their own
    void begin(const QByteArray &command, const QList<QByteArray> &prefixes = {});
    /// Whether a line that begins with "> " is the prompt.
    void expectPrompt(bool expected) { m_promptExpected = expected; }
    /// Tells what was sent after the prompt, for its echo.
    void payloadSent(const QByteArray &payload) { m_payload = payload; }
    /// The command in progress is over: lines are unsolicited until the next one begins.
    void end();

    void append(QByteArrayView bytes);
    std::optional<AtToken> next();

    /// Forgets bytes that aren't a whole line yet, the command in progress and the noise count.
    void clear();

    /// Bytes that no device in its right mind sends (NUL, above 127), since the last `clear`: what
    /// a wrong speed looks like.
    qint64 noise() const { return m_noise; }
    /// What has come of a line that isn't at its end.
    const QByteArray &unfinishedLine() const { return m_line; }

private:
    std::optional<AtToken> classify(const QByteArray &line);
    bool isFresh() const { return m_inCommand && m_position > m_staleEnd; }
    bool isUnsolicited(const QByteArray &line);
    bool belongsToCommand(const QByteArray &tag, const QByteArray &line) const;
    std::optional<AtResult> finalResult(const QByteArray &line) const;

    QByteArray m_buffer;
    qsizetype m_position = 0;
    /// Bytes up to here had been read when the command in progress began: no answer to it.
    qsizetype m_staleEnd = 0;
    QByteArray m_line;

    bool m_inCommand = false;
    bool m_promptExpected = false;
    /// The next line is the second one of an unsolicited message.
    bool m_secondLineDue = false;
    QByteArray m_command;
    QByteArray m_commandTag;
    QList<QByteArray> m_prefixes;
    QByteArray m_payload;
    qint64 m_noise = 0;
};

} // namespace norvane
