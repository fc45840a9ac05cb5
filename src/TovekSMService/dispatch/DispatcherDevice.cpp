#include "TovekSMService/dispatch/Dispatcher.h"
#include "contract/ErrorCodes.h"

#include <QDebug>

#include <utility>

namespace {

constexpr qint32 atProtocol = 1;
constexpr qint32 lastKnownProtocol = 3;

constexpr qint64 millisecondsOf(qint64 seconds)
{
    return seconds * 1000;
}

/// Whether the device can't be reached, which one failure is enough to tell.
bool isOfThePort(qint32 code)
{
    return code <= ErrorCode::PortNotFound && code >= ErrorCode::PortRead;
}

} // namespace

void Dispatcher::useDevice()
{
    if (!m_tests.isEmpty())
        m_modem.test();
    else if (!m_running && m_keepTested.isActive())
        return;
    else if (!m_running)
        closeDevice();
    else if (m_conditionDue)
        m_modem.refreshDetails();
    else if (m_outbox.isEmpty())
        sendFirst();
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
        m_parameter = settings.Parameter;
        const std::optional<PortParameter> port = parsePortParameter(settings.Parameter);
        if (settings.Protocol > atProtocol && settings.Protocol <= lastKnownProtocol)
            onFailed({ErrorCode::NotSupported,
                      QStringLiteral("of the protocols, only AT commands are supported"), true});
        else if (settings.Protocol != atProtocol)
            onFailed({ErrorCode::PortProperty, QStringLiteral("no protocol is set"), true});
        else if (!port)
            onFailed({ErrorCode::PortProperty, settings.Parameter, true});
        else
            m_modem.open(*port, settings.PINCode, openMode(), knownImei());
    } catch (const StoreFailure &failure) {
        noticeStoreFailure(failure);
        onFailed({ErrorCode::Fail, failure.text(), true});
    }
}

/// Of the device that was in use last; a store that fails is no reason to leave the device alone.
QString Dispatcher::knownImei() const
{
    try {
        return m_store.deviceImei(m_parameter);
    } catch (const StoreFailure &) {
        return {};
    }
}

void Dispatcher::closeDevice()
{
    if (m_modem.state() != Modem::State::Closed)
        m_modem.close();
}

void Dispatcher::onReady(const DeviceDetails &details)
{
    m_knownDevice = details;
    m_needsOperator = false;
    rememberDevice(details);
    m_openAgain.stop();
    m_steady.start(m_timings.steadyMs);
    if (!m_breakerTold) // a device that answers and takes no message is in trouble still
        m_deviceTrouble = {};
    m_conditionDue = false;
    m_conditionAgain.start(m_timings.conditionMs);
    if (!isJustTested(details))
        Q_EMIT deviceInfo(details);
    passTests(details);
    work();
}

void Dispatcher::onFailed(const ModemFailure &failure)
{
    m_needsOperator = failure.needsOperator;
    m_knownDevice.reset();
    failTests(failure.code, failure.text);
    if (m_running) {
        noteDeviceFailure(!isOfThePort(failure.code) && !failure.needsOperator);
        m_openAgain.start(m_retries.reopenDelay(m_deviceFailures));
        tellTrouble(failure.code, failure.text);
    }
    work();
}

/// The signal comes and goes: who asks for the state is told the one of late. That alone is no
/// event.
void Dispatcher::onCondition(const DeviceDetails &details)
{
    m_knownDevice = details;
    m_conditionDue = false;
    m_conditionAgain.start(m_timings.conditionMs);
    work();
}

void Dispatcher::onTested(bool ok, int code, const DeviceDetails &details, const QString &reason)
{
    if (ok) {
        m_knownDevice = details;
        Q_EMIT deviceInfo(details);
        passTests(details);
    } else {
        failTests(code, reason);
    }
    work();
}

void Dispatcher::passTests(const DeviceDetails &details)
{
    if (m_tests.isEmpty())
        return;
    m_testedDevice = details;
    m_keepTested.start(m_timings.keepTestedMs);
    answerTests(ErrorCode::Ok);
}

/// The reason comes before the answer, so that whoever asked has it when the call returns.
void Dispatcher::failTests(qint32 code, const QString &reason)
{
    if (m_tests.isEmpty())
        return;
    m_keepTested.stop();
    m_toldCodes.insert(code);
    warn(code, reason);
    answerTests(code);
}

/// Whether the device was reported to a test a moment ago: raised again, its details would wipe the
/// test's result off the console.
bool Dispatcher::isJustTested(const DeviceDetails &details) const
{
    return m_tests.isEmpty() && m_keepTested.isActive() && m_testedDevice &&
           m_testedDevice->imei == details.imei && m_testedDevice->model == details.model &&
           m_testedDevice->simId == details.simId;
}

void Dispatcher::answerTests(qint32 result)
{
    m_testLimit.stop();
    for (const TestAnswer &answer : std::exchange(m_tests, {}))
        answer(result);
}

/// So that it is found again under another name.
void Dispatcher::rememberDevice(const DeviceDetails &details)
{
    try {
        if (!details.imei.isEmpty() && m_store.deviceImei(m_parameter) != details.imei)
            m_store.setDeviceImei(m_parameter, details.imei);
    } catch (const StoreFailure &failure) {
        qWarning() << "the device could not be noted:" << failure.text();
    }
}

/// What a part that failed says about the device.
void Dispatcher::weighFailure(const SendFailure &failure, qint64 id)
{
    if (failure.problem == SendProblem::LineBrokenAfter)
        return; // told next, as the loss of the device
    if (failure.mayBeDelivered) {
        // A device that loses answer after answer would end the whole queue in doubt. Where it has
        // been lost itself, that is told next.
        if (m_modem.state() != Modem::State::Ready)
            return;
        noteDeviceFailure(true);
        if (!breakerIsOpen())
            return;
        m_modem.close();
        m_openAgain.start(m_retries.reopenDelay(m_deviceFailures));
        if (!std::exchange(m_breakerTold, true))
            tellTrouble(failure.rule.code, failure.text);
    } else if (!isOfDevice(failure, id)) {
        endTrouble();
    }
}

void Dispatcher::noteReset()
{
    m_resetAgain.setRemainingTime(millisecondsOf(m_settings.resetInterval));
    try {
        m_store.setLastReset(m_clock.wallClockText());
    } catch (const StoreFailure &failure) {
        qWarning() << "the reset of the device could not be noted:" << failure.text();
    }
}

/// An engine that is started again and again resets the device no more often than one that runs.
void Dispatcher::recallReset()
{
    const QDateTime last = momentOf(m_store.lastReset());
    const qint64 passed = last.secsTo(m_clock.wallClock());
    if (last.isValid() && passed >= 0 && passed < m_settings.resetInterval)
        m_resetAgain.setRemainingTime(millisecondsOf(m_settings.resetInterval - passed));
}

/// @param answered  whether it came from a device that was there: only that one may be helped by a
///                  reset, which an absent one or a wrong setting is not
void Dispatcher::noteDeviceFailure(bool answered)
{
    ++m_deviceFailures;
    if (answered)
        ++m_answeredFailures;
    m_steady.stop();
}

bool Dispatcher::breakerIsOpen() const
{
    return m_deviceFailures >= m_settings.breakerFailures;
}

/// After a part that the device didn't take.
void Dispatcher::tryDeviceLater(qint32 code, const QString &text)
{
    noteDeviceFailure(!isOfThePort(code));
    m_openAgain.start(m_retries.reopenDelay(m_deviceFailures));
    if (isOfThePort(code))
        tellTrouble(code, text);
    else if (breakerIsOpen() && !std::exchange(m_breakerTold, true))
        tellTrouble(code, text);
}

/// One trouble is told once, however often it is met again.
void Dispatcher::tellTrouble(qint32 code, const QString &text)
{
    if (m_toldCodes.contains(code)) {
        // In the words in which it was told, so that nobody hears of it twice.
        if (m_deviceTrouble.code != code)
            m_deviceTrouble = {code, text};
        return;
    }
    m_deviceTrouble = {code, text};
    m_toldCodes.insert(code);
    warn(code, text);
}

Modem::OpenMode Dispatcher::openMode() const
{
    const bool mayHelp =
        m_running && m_answeredFailures >= m_settings.breakerFailures && !m_needsOperator;
    return mayHelp && m_resetAgain.hasExpired() ? Modem::OpenMode::ResetFunctionality
                                                : Modem::OpenMode::Plain;
}

void Dispatcher::onSteady()
{
    // What becomes of the part in progress belongs to the trouble.
    if (m_current)
        m_steady.start(m_timings.steadyMs);
    else
        endTrouble();
}

void Dispatcher::endTrouble()
{
    m_deviceFailures = 0;
    m_answeredFailures = 0;
    m_breakerTold = false;
    m_toldCodes.clear();
    m_deviceTrouble = {};
    m_needsOperator = false;
    m_openAgain.stop();
}
