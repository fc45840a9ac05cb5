#include "TovekSMService/dispatch/DeviceKeeper.h"

#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "TovekSMService/dispatch/EngineSettings.h"
#include "TovekSMService/dispatch/Outbox.h"
#include "TovekSMService/dispatch/RunState.h"
#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/EngineSettingsStore.h"
#include "TovekSMService/time/Clock.h"
#include "contract/ErrorCodes.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qint32 atProtocol = 1;
constexpr qint32 lastKnownProtocol = 3;
constexpr qint32 infraredMode = 2;

/// What stands in the way of these settings, whatever the device does.
std::optional<ModemFailure> faultOf(const DeviceSettings &settings)
{
    // A device of the modem manager is reached in its own way, whatever the rest says.
    const std::optional<DeviceParameter> parameter = parseDeviceParameter(settings.Parameter);
    if (parameter && std::holds_alternative<ManagerParameter>(*parameter))
        return std::nullopt;
    if (settings.Protocol > atProtocol && settings.Protocol <= lastKnownProtocol)
        return ModemFailure{ErrorCode::notSupported,
                            u"of the protocols, only AT commands are supported"_s, true};
    if (settings.Protocol != atProtocol)
        return ModemFailure{ErrorCode::portProperty, u"no protocol is set"_s, true};
    if (settings.ConnectionMode == infraredMode)
        return ModemFailure{ErrorCode::notSupported,
                            u"infrared: this platform has no such port any more"_s, true};
    if (!parameter)
        return ModemFailure{ErrorCode::portProperty, settings.Parameter, true};
    return std::nullopt;
}

} // namespace

DeviceKeeper::DeviceKeeper(EngineSettingsStore &settingsStore, Modem &modem, const Clock &clock,
                           Outbox &outbox, const RunState &state, const RetryPolicy &retries,
                           const DispatcherTimings &timings, const EngineSettings &settings)
    : m_settings(settingsStore), m_modem(modem), m_outbox(outbox), m_state(state),
      m_refreshMs(timings.conditionMs), m_resetLimit(settingsStore, clock, settings.resetInterval),
      m_breaker(outbox, retries, timings, settings.breakerFailures, clock.time()),
      m_tests(m_breaker, timings, clock.time()), m_refresh(clock.time())
{
    connect(&m_breaker, &DeviceBreaker::openingAllowed, this, &DeviceKeeper::changed);
    connect(&m_breaker, &DeviceBreaker::steady, this, &DeviceKeeper::steady);
    connect(&m_tests, &DeviceTests::ended, this, &DeviceKeeper::changed);
    connect(&m_refresh, &Timer::timeout, this, [this] {
        m_refreshDue = true;
        Q_EMIT changed();
    });

    connect(&modem, &Modem::ready, this, &DeviceKeeper::onReady);
    connect(&modem, &Modem::failed, this, &DeviceKeeper::onFailed);
    connect(&modem, &Modem::pinResolved, this, &DeviceKeeper::changed);
    connect(&modem, &Modem::functionalityReset, this, [this] { m_resetLimit.noteReset(); });
    // The signal comes and goes: who asks for the state is given the latest one. That alone is no
    // event.
    connect(&modem, &Modem::detailsChanged, this, [this](const DeviceDetails &details) {
        noteDetails(details);
        Q_EMIT changed();
    });
    connect(&modem, &Modem::tested, this, &DeviceKeeper::onTested);
}

void DeviceKeeper::putInForce(const DeviceSettings &settings, Reopening reopening)
{
    m_reopen = m_reopen || reopening == Reopening::Always || (m_inForce && *m_inForce != settings);
    m_inForce = settings;
    m_breaker.clear();
}

void DeviceKeeper::forgetSettings()
{
    m_reopen = true;
    m_inForce.reset();
    m_knownDevice.reset();
    m_breaker.clear();
}

bool DeviceKeeper::keep()
{
    // A test on its way is not cut off by new settings.
    if (m_modem.state() != Modem::State::Busy && std::exchange(m_reopen, false)) {
        m_knownDevice.reset();
        close();
    }
    switch (m_modem.state()) {
    case Modem::State::Opening:
    case Modem::State::Initialising:
        if (!m_state.running && !m_tests.arePending())
            close();
        return false;
    case Modem::State::Busy:
        return false;
    case Modem::State::Closed:
        if (mayOpen())
            open();
        return false;
    case Modem::State::Ready:
        return use();
    }
    return false;
}

bool DeviceKeeper::use()
{
    if (m_tests.arePending())
        m_modem.test();
    else if (!m_state.running && m_tests.isDeviceHeld())
        return false;
    else if (!m_state.running)
        close();
    else if (m_refreshDue)
        m_modem.refreshDetails();
    else if (m_modem.hasMail() && m_outbox.isEmpty())
        m_modem.fetchMail();
    else
        return true;
    return false;
}

bool DeviceKeeper::isFree() const
{
    return !m_reopen && !m_refreshDue && !m_tests.arePending() && !m_modem.hasMail() &&
           m_modem.state() == Modem::State::Ready;
}

void DeviceKeeper::shutDown()
{
    close();
    m_tests.fail(ErrorCode::portClosed, u"the engine is ending"_s);
}

bool DeviceKeeper::mayOpen() const
{
    return m_tests.arePending() || (m_state.running && m_breaker.allowsOpening());
}

void DeviceKeeper::open()
{
    if (!m_inForce) {
        const StoreResult<DeviceSettings> stored = m_settings.deviceSettings();
        if (!stored) {
            m_outbox.noteStoreFailure(stored.error());
            onFailed({ErrorCode::fail, stored.error().text(), true});
            return;
        }
        m_inForce = *stored;
    }
    const DeviceSettings settings = *m_inForce;
    m_parameter = settings.Parameter;
    if (const std::optional<ModemFailure> fault = faultOf(settings))
        onFailed(*fault);
    else
        m_modem.open(*parseDeviceParameter(settings.Parameter), settings.PINCode, openMode(),
                     knownImei());
}

Modem::OpenMode DeviceKeeper::openMode() const
{
    return m_state.running && m_breaker.suggestsReset() && m_resetLimit.allowsReset()
               ? Modem::OpenMode::ResetFunctionality
               : Modem::OpenMode::Plain;
}

/// Of the device that was in use last; a store that fails is no reason to leave the device alone.
QString DeviceKeeper::knownImei() const
{
    return m_settings.deviceImei(m_parameter).value_or(QString());
}

void DeviceKeeper::close()
{
    if (m_modem.state() != Modem::State::Closed)
        m_modem.close();
}

void DeviceKeeper::onReady(const DeviceDetails &details)
{
    m_breaker.noteReady();
    rememberDevice(details);
    noteDetails(details);
    if (!m_tests.wasJustReported(details))
        Q_EMIT deviceInfo(details);
    m_tests.pass(details);
    Q_EMIT changed();
}

void DeviceKeeper::onFailed(const ModemFailure &failure)
{
    m_breaker.noteSimState(failure.needsOperator);
    m_knownDevice.reset();
    m_tests.fail(failure.code, failure.text);
    if (m_state.running)
        m_breaker.noteLost(failure);
    Q_EMIT changed();
}

void DeviceKeeper::noteDetails(const DeviceDetails &details)
{
    m_knownDevice = details;
    m_refreshDue = false;
    m_refresh.start(m_refreshMs);
}

void DeviceKeeper::onTested(bool ok, int code, const DeviceDetails &details, const QString &reason)
{
    if (ok) {
        m_knownDevice = details;
        Q_EMIT deviceInfo(details);
        m_tests.pass(details);
    } else {
        m_tests.fail(code, reason);
    }
    Q_EMIT changed();
}

/// So that it is found again under another name.
void DeviceKeeper::rememberDevice(const DeviceDetails &details)
{
    if (details.imei.isEmpty())
        return;
    const StoreResult<> noted =
        m_settings.deviceImei(m_parameter).and_then([&](const QString &known) {
            return known == details.imei ? StoreResult<>()
                                         : m_settings.setDeviceImei(m_parameter, details.imei);
        });
    if (!noted)
        qCWarning(logDispatch) << "the device could not be noted:" << noted.error().text();
}

void DeviceKeeper::noteFailed(const SendFailure &failure, bool ofDevice)
{
    if (failure.problem == SendProblem::LineBrokenAfter)
        return; // the loss of the device comes next
    if (!failure.mayBeDelivered) {
        if (!ofDevice)
            m_breaker.clear();
        return;
    }
    // A device that loses answer after answer would end the whole queue in doubt. Where it was lost
    // itself, that comes next.
    if (m_modem.state() != Modem::State::Ready)
        return;
    m_breaker.noteLostAnswer();
    if (!m_breaker.isOpen())
        return;
    m_modem.close();
    m_breaker.pause(failure.rule.code, failure.text);
}

bool DeviceKeeper::giveUp(const SendFailure &failure)
{
    m_modem.close();
    m_breaker.noteRefusal(failure.rule.code, failure.text);
    return m_breaker.isOpen();
}

} // namespace norvane
