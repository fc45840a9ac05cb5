#pragma once

#include "TovekSMService/modem/at/SerialLine.h"

#include <QHash>
#include <QList>
#include <QStringList>

#include <functional>
#include <optional>

namespace norvane {

/// A line with a small modem at its other end, all in memory. What it answers is set by the public
/// members; it answers at the next turn of the event loop, never from within `write`.
class FakeModemLine : public SerialLine
{
    Q_OBJECT

public:
    using SerialLine::SerialLine;

    Result<void, LineFailure> open(const QString &device, int baud) override;
    void close() override;
    bool isOpen() const override { return m_open; }
    bool write(const QByteArray &bytes) override;

    /// Sends bytes as if the device had said them by itself.
    void say(const QByteArray &bytes);
    /// Pulls the plug.
    void breakOff(LineError reason = LineError::Unplugged);

    /// A line in the form of a device, and a final result.
    static QByteArray info(const QByteArray &line);
    static QByteArray answer(const QByteArray &line);

    // What the line does.
    std::optional<LineError> openError;
    /// For these devices instead.
    QHash<QString, LineError> openErrors;
    QString detail; ///< of each failure
    bool writable = true;
    /// Breaks after so many bytes out of, or into, the device, counted from when it is set.
    int breakAfterSaid = -1;
    int breakAfterHeard = -1;
    /// The sizes of the pieces in which bytes arrive; 0 for whole answers.
    int pieceSize = 0;

    // What the device does.
    bool echo = false;
    bool silent = false;
    /// A line put in front of each line of an answer.
    QByteArray betweenLines;
    /// Puts `interjection` behind so many bytes out of the device, counted from when it is set.
    int interjectAfter = -1;
    QByteArray interjection;
    QByteArray prompt = "\r\n> ";
    QByteArray submitAnswer = "\r\n+CMGS: 42\r\n\r\nOK\r\n";
    /// The prompt waits until `say` sends it.
    bool promptHeldBack = false;
    QHash<QByteArray, QByteArray> answers;
    /// Called at each opening, whether it succeeds or not.
    std::function<void()> onOpen;
    /// Asked first; nothing leaves the command to `answers`, and those that it lacks get ERROR.
    std::function<std::optional<QByteArray>(const QByteArray &)> onCommand;

    // What has happened.
    QString openedDevice;
    int openedBaud = 0;
    int openings = 0;
    QStringList openedDevices;
    QList<QByteArray> commands;
    QList<QByteArray> payloads;
    int escapes = 0;
    bool atPrompt = false;

private:
    void hear(char byte);
    void obey(const QByteArray &command);
    void deliver(QByteArray bytes);

    bool m_open = false;
    bool m_unplugged = false;
    quint64 m_opening = 0;
    QByteArray m_input;
};

/// Gives the modem an ordinary device: unlocked SIM, registered, all details told.
void makeOrdinary(FakeModemLine &line);

} // namespace norvane
