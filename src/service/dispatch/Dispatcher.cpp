#include "service/dispatch/Dispatcher.h"

#include "engine/contract/ErrorCodes.h"

#include <QDebug>
#include <QScopeGuard>

#include <utility>

namespace {

constexpr qint32 atProtocol = 1;
constexpr qint32 lastKnownProtocol = 3;
constexpr qsizetype mostUnheardWarnings = 50;

} // namespace

Dispatcher::Dispatcher(Store &store, Modem &modem, const Clock &clock, const RetryPolicy &retries,
                       const DispatcherTimings &timings, QObject *parent)
    : QObject(parent), m_store(store), m_modem(modem), m_clock(clock), m_retries(retries),
      m_timings(timings)
{
    for (QTimer *const timer : {&m_settleAgain, &m_wake, &m_openAgain, &m_steady, &m_testLimit})
        timer->setSingleShot(true);
    connect(&m_settleAgain, &QTimer::timeout, this, &Dispatcher::trySettling);
    connect(&m_wake, &QTimer::timeout, this, &Dispatcher::work);
    connect(&m_openAgain, &QTimer::timeout, this, &Dispatcher::work);
    connect(&m_steady, &QTimer::timeout, this, &Dispatcher::endTrouble);
    connect(&m_testLimit, &QTimer::timeout, this, [this] { answerTests(ErrorCode::NoRespond); });

    connect(&modem, &Modem::ready, this, &Dispatcher::onReady);
    connect(&modem, &Modem::failed, this, &Dispatcher::onFailed);
    connect(&modem, &Modem::tested, this, &Dispatcher::onTested);
    connect(&modem, &Modem::partAccepted, this, &Dispatcher::onPartAccepted);
    connect(&modem, &Modem::partFailed, this, &Dispatcher::onPartFailed);
}

void Dispatcher::resume()
{
    m_running = m_store.isToRun();
    m_release = !m_running;
    if (m_running)
        Q_EMIT statusChanged(status());
    settle([this] { reportInterrupted(); });
}

void Dispatcher::reportInterrupted()
{
    for (const StoredMessage &message : m_store.interrupted()) {
        const bool heard = m_heard;
        m_store.finish(message.id, ErrorCode::NoRespond, std::nullopt, m_clock.wallClockText(),
                       heard);
        if (heard)
            Q_EMIT sendingFailed(message.phone, message.text, ErrorCode::NoRespond);
        warn(ErrorCode::NoRespond,
             QStringLiteral("the engine ended while sending to %1; the message may have been "
                            "delivered")
                 .arg(message.phone));
        Q_EMIT queueChanged();
    }
}

void Dispatcher::start()
{
    const DeviceSettings settings = m_store.deviceSettings();
    if (m_running && m_inForce == settings)
        return;
    m_store.setToRun(true);
    m_applySettings = m_applySettings || (m_inForce && *m_inForce != settings);
    m_inForce = settings;
    m_running = true;
    endTrouble();
    Q_EMIT statusChanged(status());
    work();
}

void Dispatcher::stop()
{
    if (!m_running)
        return;
    m_store.setToRun(false);
    m_running = false;
    m_release = true;
    Q_EMIT statusChanged(status());
    work();
}

void Dispatcher::applySettings()
{
    m_inForce = m_store.deviceSettings();
    m_applySettings = true;
    endTrouble();
    work();
}

void Dispatcher::testDevice(TestAnswer answer)
{
    m_tests.append(std::move(answer));
    if (!m_testLimit.isActive())
        m_testLimit.start(m_timings.testAnswerMs);
    work();
}

void Dispatcher::noticeQueueChange()
{
    Q_EMIT queueChanged();
    work();
}

void Dispatcher::warnTooLate()
{
    Q_EMIT queueChanged();
    warn(ErrorCode::PhoneBusy,
         QStringLiteral("the change came too late for a message that is being sent or has left the "
                        "queue"));
}

QList<Dispatcher::Warning> Dispatcher::takeUnheardWarnings()
{
    return std::exchange(m_unheardWarnings, {});
}

void Dispatcher::finish()
{
    m_finishing = true;
    work();
}

void Dispatcher::work()
{
    if (m_working || m_current)
        return;
    m_working = true;
    const auto leave = qScopeGuard([this] { m_working = false; });

    if (m_finishing) {
        if (!m_unsettled)
            leaveAll();
        return;
    }
    if (!m_running && m_release && !m_unsettled)
        releaseMessages();
    // A test on its way is not cut off by new settings.
    if (m_modem.state() != Modem::State::Busy && std::exchange(m_applySettings, false)) {
        m_knownDevice.reset();
        closeDevice();
    }

    switch (m_modem.state()) {
    case Modem::State::Opening:
    case Modem::State::Initialising:
        if (!m_running && m_tests.isEmpty())
            closeDevice();
        return;
    case Modem::State::Busy:
        return;
    case Modem::State::Closed:
        if (mayOpen())
            openDevice();
        return;
    case Modem::State::Ready:
        useDevice();
        return;
    }
}

void Dispatcher::useDevice()
{
    if (!m_tests.isEmpty())
        m_modem.test();
    else if (!m_running)
        closeDevice();
    else if (!m_unsettled)
        sendFirst();
}

void Dispatcher::leaveAll()
{
    closeDevice();
    answerTests(ErrorCode::PortClosed);
    Q_EMIT finished();
}

bool Dispatcher::mayOpen() const
{
    return !m_tests.isEmpty() || (m_running && !m_openAgain.isActive());
}

void Dispatcher::openDevice()
{
    try {
        if (!m_inForce)
            m_inForce = m_store.deviceSettings();
        const DeviceSettings settings = *m_inForce;
        const std::optional<PortParameter> port = parsePortParameter(settings.Parameter);
        if (settings.Protocol > atProtocol && settings.Protocol <= lastKnownProtocol)
            onFailed({ErrorCode::NotSupported,
                      QStringLiteral("of the protocols, only AT commands are supported"), false});
        else if (settings.Protocol != atProtocol)
            onFailed({ErrorCode::PortProperty, QStringLiteral("no protocol is set"), false});
        else if (!port)
            onFailed({ErrorCode::PortProperty, settings.Parameter, false});
        else
            m_modem.open(*port, settings.PINCode);
    } catch (const StoreFailure &failure) {
        onFailed({ErrorCode::Fail, failure.text(), false});
    }
}

void Dispatcher::closeDevice()
{
    if (m_modem.state() != Modem::State::Closed)
        m_modem.close();
}

void Dispatcher::releaseMessages()
{
    try {
        m_store.releaseBetweenParts();
        m_release = false;
    } catch (const StoreFailure &failure) {
        qWarning() << "messages in progress could not be released:" << failure.text();
        m_wake.start(m_timings.storeAgainMs);
    }
}

void Dispatcher::onReady(const DeviceDetails &details)
{
    m_knownDevice = details;
    m_openAgain.stop();
    m_steady.start(m_timings.steadyMs);
    Q_EMIT deviceInfo(details);
    if (!m_tests.isEmpty())
        answerTests(ErrorCode::Ok);
    work();
}

void Dispatcher::onFailed(const ModemFailure &failure)
{
    m_knownDevice.reset();
    answerTests(failure.code);
    if (m_running)
        tryDeviceLater(failure.code, failure.text);
    work();
}

void Dispatcher::onTested(bool ok, int code, const DeviceDetails &details)
{
    if (ok) {
        m_knownDevice = details;
        Q_EMIT deviceInfo(details);
    }
    answerTests(ok ? ErrorCode::Ok : code);
    work();
}

void Dispatcher::answerTests(qint32 result)
{
    m_testLimit.stop();
    for (const TestAnswer &answer : std::exchange(m_tests, {}))
        answer(result);
}

void Dispatcher::tryDeviceLater(qint32 code, const QString &text)
{
    ++m_deviceFailures;
    m_steady.stop();
    m_openAgain.start(m_retries.reopenDelay(m_deviceFailures));
    // One trouble is told once, however often it is met again.
    if (std::exchange(m_warnedCode, code) != code)
        warn(code, text);
}

void Dispatcher::endTrouble()
{
    m_deviceFailures = 0;
    m_warnedCode = 0;
    m_openAgain.stop();
}

void Dispatcher::warn(qint32 code, const QString &text)
{
    qWarning().noquote() << "warning" << code << text;
    if (m_heard) {
        Q_EMIT warning(code, text);
        return;
    }
    const Warning unheard{code, text};
    if (!m_unheardWarnings.contains(unheard) && m_unheardWarnings.size() < mostUnheardWarnings)
        m_unheardWarnings.append(unheard);
}
