#pragma once

#include "gsm-simulator/AtInterpreter.h"
#include "gsm-simulator/MessageLog.h"
#include "gsm-simulator/ModemPort.h"
#include "gsm-simulator/PacedLine.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QObject>
#include <QTimer>

#include <optional>

namespace norvane {

namespace simulator {

/// How the line to the modem is.
struct LineSettings
{
    int bitsPerSecond = 0; ///< 0: as fast as it goes
    std::chrono::milliseconds unsolicitedInterval{400};
};

/// The interpreter on its port: lets the delays pass, paces the line, keeps the log.
class SimulatedModem : public QObject
{
    Q_OBJECT

public:
    SimulatedModem(ModemPort &port, MessageLog &log, const ModemSettings &modem,
                   const LineSettings &line, QObject *parent = nullptr);

    /// Runs a command of the simulator's own.
    ControlCommands::Outcome control(const QByteArray &line);

Q_SIGNALS:
    /// The modem has been unplugged; its port is closed.
    void unplugged();

    /// The log couldn't be written; the modem answers no more.
    void failed(const QString &reason);

private:
    void take(const QByteArray &bytes);
    void handle(const Step &step);
    void scheduleWake();
    void send(const QByteArray &bytes);
    void movePacedBytes();
    void schedulePacedBytes();
    void waitForClientToRead();
    PacedLine::Time now() const;

    ModemPort &m_port;
    MessageLog &m_log;
    AtInterpreter m_interpreter;
    std::function<QDateTime()> m_clock;
    std::optional<PacedLine> m_toModem;
    std::optional<PacedLine> m_toClient;
    QElapsedTimer m_uptime;
    QTimer m_pauseTimer;
    QTimer m_wakeTimer;
    QTimer m_paceTimer;
    QTimer m_unsolicitedTimer;
    QTimer m_unplugTimer;
    QDeadlineTimer m_unplugDeadline;
    int m_idlePolls = 0;
    bool m_stopped = false;
};

} // namespace simulator

} // namespace norvane
