#include "TovekSMService/modem/device/ManagedModem.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/modem/manager/ManagerFailures.h"
#include "TovekSMService/modem/manager/ManagerNames.h"
#include "contract/ErrorCodes.h"

#include <QDBusArgument>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

ManagedModem::ManagedModem(Bus bus, PinGate &gate, const ModemTimings &timings, TimeSource &time,
                           QObject *parent)
    : Modem(parent), m_connection(std::move(bus)), m_timings(timings),
      m_startup(
          gate, timings, [this] { look(); },
          [this] {
              // Whoever hears it may close the modem, which must not happen to a step on the
              // stack.
              QMetaObject::invokeMethod(this, &Modem::pinResolved, Qt::QueuedConnection);
          },
          time),
      m_mailbox(
          timings, [this] { Q_EMIT mailDue(); }, time),
      m_submission(timings), m_poll(time), m_initialisationLimit(time), m_appearance(time)
{
    connect(&m_poll, &Timer::timeout, this, &ManagedModem::look);
    connect(&m_initialisationLimit, &Timer::timeout, this, &ManagedModem::onLate);
}

ManagedModem::~ManagedModem()
{
    // Whoever listens may be on the way out too.
    blockSignals(true);
    shutDown();
}

void ManagedModem::open(const DeviceParameter &parameter, const QString &pin, OpenMode,
                        const QString &)
{
    close();
    m_state = State::Opening;
    m_parameter = std::get<ManagerParameter>(parameter);
    m_pin = pin;
    m_details = {};
    m_initialisationLimit.start(m_timings.initialisationMs);
    QMetaObject::invokeMethod(
        this,
        [this, opening = ++m_opening] {
            if (m_state == State::Opening && m_opening == opening)
                begin();
        },
        Qt::QueuedConnection);
}

void ManagedModem::begin()
{
    connectBus();
    if (!m_bus->isConnected()) {
        fail({ErrorCode::portNotFound, u"the system bus can't be reached, and no modem manager"_s,
              false});
        return;
    }
    m_state = State::Initialising;
    m_appearance.setRemainingTime(m_timings.managerMs);
    m_startup.start(std::exchange(m_pin, QString()));
    look();
}

void ManagedModem::connectBus()
{
    if (m_bus && m_bus->isConnected())
        return;
    m_bus = std::make_unique<ManagerBus>(m_connection());
    connect(m_bus.get(), &ManagerBus::objectAdded, this, [this] {
        if (m_state == State::Initialising)
            look();
    });
    connect(m_bus.get(), &ManagerBus::objectRemoved, this,
            [this](const QString &path, const QStringList &interfaces) {
                if (path == m_device && interfaces.contains(Manager::modem))
                    onLost(u"the device has gone, or another program keeps it for itself"_s);
            });
    connect(m_bus.get(), &ManagerBus::lost, this,
            [this] { onLost(u"the modem manager has gone"_s); });
    connect(m_bus.get(), &ManagerBus::propertiesChanged, this, &ManagedModem::onPropertiesChanged);
    connect(m_bus.get(), &ManagerBus::messageAdded, this,
            [this](const QString &device, const QString &message, bool isReceived) {
                if (isReceived && device == m_device)
                    m_mailbox.note(message);
            });
}

/// Asks what the manager has, and does what the device needs next.
void ManagedModem::look()
{
    m_poll.stop();
    if (m_state != State::Initialising || std::exchange(m_isLooking, true))
        return;
    askObjects([this](const ManagedObjects &objects, const QDBusMessage &error) {
        m_isLooking = false;
        onObjects(objects, error);
    });
}

/// The SIM of a device is no object among the others and is asked for by itself.
void ManagedModem::askObjects(const ObjectsDone &done)
{
    m_bus->askObjects(m_timings.slowCommandMs, [this, done](const ManagedObjects &objects,
                                                            const QDBusMessage &error) {
        const auto device = ManagedDevice::find(objects, m_parameter.imei);
        const QString sim = device ? device->simPath() : QString();
        if (sim.size() < 2) { // "/" is for none
            done(objects, error);
            return;
        }
        m_bus->call(sim, Manager::properties, u"GetAll"_s, {QString(Manager::sim)},
                    m_timings.commandMs, [objects, sim, done](const QDBusMessage &reply) {
                        ManagedObjects all = objects;
                        if (reply.type() == QDBusMessage::ReplyMessage)
                            all[QDBusObjectPath(sim)][Manager::sim] =
                                qdbus_cast<QVariantMap>(reply.arguments().value(0));
                        done(all, {});
                    });
    });
}

void ManagedModem::onObjects(const ManagedObjects &objects, const QDBusMessage &error)
{
    if (error.type() == QDBusMessage::ErrorMessage) {
        fail(ManagerFailures::ofDevice(error));
        return;
    }
    const std::optional<ManagedDevice> device = ManagedDevice::find(objects, m_parameter.imei);
    if (!device) {
        onMissing();
        return;
    }
    m_device = device->path();
    const Result<ManagedStartup::Readiness, ModemFailure> readiness =
        m_startup.advance(*m_bus, *device);
    if (!readiness)
        fail(readiness.error());
    else if (*readiness == ManagedStartup::Readiness::Ready)
        becomeReady(*device);
    else
        m_poll.start(m_timings.simPollMs);
}

/// A manager that has just been started finds its devices within seconds, and one whose SIM has
/// been unlocked may come back as another object.
void ManagedModem::onMissing()
{
    if (!m_appearance.hasExpired() || m_startup.awaitsPinOutcome()) {
        m_poll.start(m_timings.simPollMs);
        return;
    }
    const QString &imei = m_parameter.imei;
    fail({ErrorCode::portNotFound,
          imei.isEmpty() ? u"the modem manager has no device that can send"_s
                         : u"the modem manager has no device with the IMEI "_s + imei,
          false});
}

void ManagedModem::becomeReady(const ManagedDevice &device)
{
    m_initialisationLimit.stop();
    m_poll.stop();
    m_details = device.details();
    m_isRegistered = device.isRegistered();
    m_mailbox.setUp(*m_bus, m_device);
    m_state = State::Ready;
    Q_EMIT ready(m_details);
}

void ManagedModem::onPropertiesChanged(const QString &path, const QString &interface,
                                       const QVariantMap &changed)
{
    if (interface == Manager::sms && changed.contains(u"State"_s)) {
        if (changed.value(u"State"_s).toInt() == static_cast<int>(Manager::SmsState::Received))
            m_mailbox.noteComplete(path);
        return;
    }
    if (path != m_device || interface != Manager::modem || !changed.contains(u"State"_s))
        return;
    const auto state = static_cast<Manager::ModemState>(changed.value(u"State"_s).toInt());
    m_isRegistered = state >= Manager::ModemState::Registered;
    if (m_state == State::Initialising)
        look();
    else if (state <= Manager::ModemState::Disabling)
        onLost(u"the device was switched off or has changed"_s);
}

void ManagedModem::onLost(const QString &text)
{
    if (m_state == State::Initialising) {
        m_startup.noteLost();
        m_isLooking = false;
        m_bus->forgetCalls();
        m_poll.start(m_timings.simPollMs);
    } else if (isInUse()) {
        // Nothing else is to begin on the news of what was under way.
        m_state = State::Opening;
        const quint64 opening = m_opening;
        m_submission.stop(text);
        if (m_state == State::Opening && m_opening == opening)
            fail({ErrorCode::portClosed, text, false});
    }
}

void ManagedModem::onLate()
{
    // The talk with a SIM about its PIN has limits of its own and is not cut off.
    if (m_startup.awaitsPinOutcome())
        m_initialisationLimit.start(m_timings.slowCommandMs);
    else
        fail({ErrorCode::phoneInit, u"the device isn't ready within its time"_s, false});
}

void ManagedModem::send(const SubmitPart &part, Followers)
{
    if (m_state != State::Ready || !part.whole) {
        refusePart({SendProblem::NotSent, -1, u"the modem isn't ready"_s,
                    failureRule(SendProblem::NotSent), false});
        return;
    }
    // A failure of the first of several parts would look like one in the middle.
    if (!m_isRegistered && part.count() > 1) {
        constexpr int noNetwork = 331; // 3GPP TS 27.005, 3.2.5
        refusePart({SendProblem::CmsError, noNetwork, u"no network"_s,
                    failureRule(FailureSpace::Cms, noNetwork), false});
        return;
    }
    m_state = State::Busy;
    SubmitPart message = part;
    message.asksForReport = part.asksForReport && !m_refusals.contains(m_details.simId);
    m_asksForReport = message.asksForReport;
    m_submission.start(*m_bus, m_device, message,
                       [this](const ManagedSubmission::Outcome &outcome) { onSubmitted(outcome); });
}

void ManagedModem::onSubmitted(const ManagedSubmission::Outcome &outcome)
{
    if (outcome.isReportRefused) {
        m_refusals.add(m_details.simId);
        m_asksForReport = false;
    }
    if (m_state == State::Busy)
        m_state = State::Ready;
    if (outcome.isAccepted)
        Q_EMIT partAccepted(outcome.reference,
                            m_asksForReport ? ReportRequest::Asked : ReportRequest::None);
    else
        Q_EMIT partFailed(outcome.failure);
}

/// @param then  gets the device as it is now; nothing if it is gone or can't be asked about
void ManagedModem::askDevice(const std::function<void(const std::optional<ManagedDevice> &)> &then)
{
    m_state = State::Busy;
    askObjects([this, then](const ManagedObjects &objects, const QDBusMessage &) {
        m_state = State::Ready;
        const bool isThere = objects.contains(QDBusObjectPath(m_device));
        then(isThere ? std::optional(ManagedDevice(m_device, objects)) : std::nullopt);
    });
}

void ManagedModem::refreshDetails()
{
    if (m_state != State::Ready)
        return;
    askDevice([this](const std::optional<ManagedDevice> &device) {
        if (device)
            m_details = device->details();
        Q_EMIT detailsChanged(m_details);
    });
}

void ManagedModem::fetchMail()
{
    if (m_state != State::Ready)
        return;
    m_state = State::Busy;
    m_mailbox.work([this](const QList<Arrival> &arrivals) {
        m_state = State::Ready;
        Q_EMIT mailRead(arrivals);
    });
}

void ManagedModem::test()
{
    if (m_state != State::Ready) {
        refuseTest();
        return;
    }
    m_isTesting = true;
    askDevice([this](const std::optional<ManagedDevice> &device) { onTested(device); });
}

void ManagedModem::onTested(const std::optional<ManagedDevice> &device)
{
    m_isTesting = false;
    if (!device) {
        Q_EMIT tested(false, ErrorCode::portClosed, m_details, u"the device doesn't answer"_s);
        return;
    }
    m_details = device->details();
    const Manager::Lock lock = device->lock();
    const bool isLocked = lock == Manager::Lock::SimPin || lock == Manager::Lock::SimPuk;
    if (isLocked)
        Q_EMIT tested(false, ErrorCode::simPinRequired, m_details, u"the SIM is locked"_s);
    else
        Q_EMIT tested(true, ErrorCode::ok, m_details, {});
}

void ManagedModem::close()
{
    shutDown();
}

/// Closes everything and answers a message or a test in progress.
void ManagedModem::shutDown()
{
    const bool isTesting = std::exchange(m_isTesting, false);
    m_state = State::Closed;
    m_initialisationLimit.stop();
    m_poll.stop();
    m_isLooking = false;
    m_startup.stop();
    m_mailbox.reset();
    m_device.clear();
    m_pin.clear();
    if (m_bus)
        m_bus->forgetCalls();
    m_submission.stop(u"the device was closed"_s);
    m_state = State::Closed;
    if (isTesting)
        Q_EMIT tested(false, failureRule(LineError::NotOpen).code, m_details,
                      u"the device was closed"_s);
}

void ManagedModem::fail(const ModemFailure &failure)
{
    const quint64 opening = m_opening;
    const bool isTesting = std::exchange(m_isTesting, false);
    shutDown();
    if (isTesting)
        Q_EMIT tested(false, failure.code, m_details, failure.text);
    // Whoever opened the modem anew on the news above is past this failure.
    if (m_opening == opening)
        Q_EMIT failed(failure);
}

} // namespace norvane
