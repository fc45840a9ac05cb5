#include "gsm-simulator/SimulatedModem.h"

#include <algorithm>

namespace norvane {

namespace simulator {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds unplugPollInterval{5};
constexpr milliseconds unplugTimeout{2000};
constexpr qint64 maxWakeMs = 60'000;

/// Bytes on their way to the modem beyond which the client has to wait.
constexpr qsizetype maxUnderway = 4096;

} // namespace

SimulatedModem::SimulatedModem(ModemPort &port, MessageLog &log, const ModemSettings &modem,
                               const LineSettings &line, QObject *parent)
    : QObject(parent), m_port(port), m_log(log), m_interpreter(modem), m_clock(modem.clock)
{
    m_uptime.start();
    m_pauseTimer.setSingleShot(true);
    m_pauseTimer.setTimerType(Qt::PreciseTimer);
    m_wakeTimer.setSingleShot(true);
    m_wakeTimer.setTimerType(Qt::PreciseTimer);
    m_paceTimer.setSingleShot(true);
    m_paceTimer.setTimerType(Qt::PreciseTimer);
    connect(&m_pauseTimer, &QTimer::timeout, this, [this] { handle(m_interpreter.resume()); });
    connect(&m_wakeTimer, &QTimer::timeout, this, [this] { handle(m_interpreter.wake()); });
    connect(&m_paceTimer, &QTimer::timeout, this, &SimulatedModem::movePacedBytes);
    connect(&m_unplugTimer, &QTimer::timeout, this, &SimulatedModem::waitForClientToRead);
    connect(&m_port, &ModemPort::received, this, &SimulatedModem::take);
    if (line.bitsPerSecond > 0) {
        m_toModem.emplace(line.bitsPerSecond);
        m_toClient.emplace(line.bitsPerSecond);
        connect(&m_port, &ModemPort::abandoned, this, [this] { m_toClient->clear(); });
    }
    if (modem.unsolicited) {
        connect(&m_unsolicitedTimer, &QTimer::timeout, this,
                [this] { send(m_interpreter.unsolicitedLine()); });
        m_unsolicitedTimer.start(line.unsolicitedInterval);
    }
}

void SimulatedModem::take(const QByteArray &bytes)
{
    if (m_stopped)
        return;
    if (!m_toModem) {
        handle(m_interpreter.take(bytes));
        return;
    }
    m_toModem->push(bytes, now());
    m_port.setReading(m_toModem->size() < maxUnderway && !m_interpreter.isPaused());
    schedulePacedBytes();
}

ControlCommands::Outcome SimulatedModem::control(const QByteArray &line)
{
    if (m_stopped)
        return {"error the modem is unplugged", true, false};
    const ControlCommands::Outcome outcome = m_interpreter.control(line);
    Step step = m_interpreter.wake();
    step.unplugged = outcome.unplugs;
    handle(step);
    return outcome;
}

void SimulatedModem::handle(const Step &step)
{
    for (const AcceptedMessage &message : step.accepted) {
        const QString failure = m_log.append(jsonLine(message, m_clock()));
        if (!failure.isEmpty()) {
            m_stopped = true;
            Q_EMIT failed(failure);
            return;
        }
    }
    send(step.output);
    if (step.pause.count() > 0)
        m_pauseTimer.start(step.pause);
    if (step.unplugged) {
        m_stopped = true;
        m_unplugDeadline.setRemainingTime(unplugTimeout);
        m_unplugTimer.start(unplugPollInterval);
    }
    // The line is stopped while an answer is being waited for, as a modem's flow control does.
    m_port.setReading(!m_interpreter.isPaused() &&
                      !(m_toModem && m_toModem->size() >= maxUnderway));
    scheduleWake();
}

void SimulatedModem::scheduleWake()
{
    const std::optional<QDateTime> next = m_interpreter.nextWake();
    if (!next || m_stopped) {
        m_wakeTimer.stop();
        return;
    }
    // A clock that is set back or forth lets it look again; it never spins.
    const qint64 wait = std::clamp<qint64>(m_clock().msecsTo(*next), 1, maxWakeMs);
    m_wakeTimer.start(milliseconds(wait));
}

void SimulatedModem::send(const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return;
    if (!m_toClient) {
        m_port.write(bytes);
        return;
    }
    m_toClient->push(bytes, now());
    schedulePacedBytes();
}

void SimulatedModem::movePacedBytes()
{
    const PacedLine::Time moment = now();
    m_port.write(m_toClient->pop(moment));
    const QByteArray arrived = m_toModem->pop(moment);
    if (!arrived.isEmpty() && !m_stopped)
        handle(m_interpreter.take(arrived));
    schedulePacedBytes();
}

void SimulatedModem::schedulePacedBytes()
{
    if (m_paceTimer.isActive())
        return;
    std::optional<PacedLine::Time> next = m_toModem->nextArrival();
    if (const auto other = m_toClient->nextArrival())
        next = next ? std::min(*next, *other) : other;
    if (next) {
        const auto wait = std::chrono::ceil<milliseconds>(*next - now());
        m_paceTimer.start(std::max(wait, milliseconds(1)));
    }
}

/// Unplugging takes away what the client hasn't read; the last answer is to reach it.
void SimulatedModem::waitForClientToRead()
{
    const bool underway = m_toClient && m_toClient->size() > 0;
    const bool unread = underway || m_port.unreadByClient() > 0;
    // Bytes between both ends of a line are in neither's count for a moment.
    constexpr int pollsNeeded = 2;
    m_idlePolls = unread ? 0 : m_idlePolls + 1;
    if (m_idlePolls < pollsNeeded && !m_unplugDeadline.hasExpired())
        return;
    m_unplugTimer.stop();
    m_unsolicitedTimer.stop();
    m_paceTimer.stop();
    m_port.close();
    Q_EMIT unplugged();
}

PacedLine::Time SimulatedModem::now() const
{
    return std::chrono::nanoseconds(m_uptime.nsecsElapsed());
}

} // namespace simulator

} // namespace norvane
