#pragma once

#include "TovekSMService/modem/at/ModemTimings.h"
#include "TovekSMService/modem/device/ManagedMailbox.h"
#include "TovekSMService/modem/device/ManagedStartup.h"
#include "TovekSMService/modem/device/ManagedSubmission.h"
#include "TovekSMService/modem/device/Modem.h"
#include "TovekSMService/modem/device/ReportRefusals.h"
#include "TovekSMService/modem/manager/ManagerBus.h"
#include "TovekSMService/time/Deadline.h"
#include "TovekSMService/time/Timer.h"

#include <QDBusConnection>

#include <functional>
#include <memory>
#include <optional>

namespace norvane {

/// A device that the platform's modem manager owns. It takes messages as a whole.
class ManagedModem : public Modem
{
    Q_OBJECT

public:
    /// Gives the bus that the manager is on. Is asked with each opening, until it is connected.
    using Bus = std::function<QDBusConnection()>;

    /// @param gate  asked before a PIN leaves; outlives the modem, as `time` does
    ManagedModem(Bus bus, PinGate &gate, const ModemTimings &timings, TimeSource &time,
                 QObject *parent = nullptr);
    ~ManagedModem() override;

    State state() const override { return m_state; }
    const DeviceDetails &details() const override { return m_details; }
    Unit unit() const override { return Unit::Message; }

    /// @param parameter  a ManagerParameter
    /// @param imei       has no meaning: the parameter says which device it is
    void open(const DeviceParameter &parameter, const QString &pin, OpenMode mode = OpenMode::Plain,
              const QString &imei = {}) override;
    void close() override;
    bool awaitsPinOutcome() const override { return m_startup.awaitsPinOutcome(); }

    void send(const SubmitPart &part, Followers followers = Followers::None) override;
    bool asksForFollowers() const override { return false; }
    void refreshDetails() override;

    bool hasMail() const override { return m_mailbox.isDue(); }
    void fetchMail() override;
    void dismissMail(const QList<Arrival> &arrivals) override { m_mailbox.dismiss(arrivals); }
    void deferMail(const QList<Arrival> &arrivals) override { m_mailbox.defer(arrivals); }

    void test() override;

private:
    using ObjectsDone = std::function<void(const ManagedObjects &, const QDBusMessage &error)>;

    void begin();
    void connectBus();
    void look();
    void askObjects(const ObjectsDone &done);
    void onObjects(const ManagedObjects &objects, const QDBusMessage &error);
    void onMissing();
    void becomeReady(const ManagedDevice &device);
    void onPropertiesChanged(const QString &path, const QString &interface,
                             const QVariantMap &changed);
    void onLost(const QString &text);
    void onLate();
    void onSubmitted(const ManagedSubmission::Outcome &outcome);
    void askDevice(const std::function<void(const std::optional<ManagedDevice> &)> &then);
    void onTested(const std::optional<ManagedDevice> &device);
    void shutDown();
    void fail(const ModemFailure &failure);
    bool isInUse() const { return m_state == State::Ready || m_state == State::Busy; }

    const Bus m_connection;
    const ModemTimings m_timings;
    std::unique_ptr<ManagerBus> m_bus; ///< from the first opening on
    ManagedStartup m_startup;
    ManagedMailbox m_mailbox;
    ManagedSubmission m_submission;
    ReportRefusals m_refusals;
    Timer m_poll; ///< until the device is looked at again while it comes up
    Timer m_initialisationLimit;
    Deadline m_appearance; ///< by which the manager must have the device

    State m_state = State::Closed;
    ManagerParameter m_parameter;
    QString m_pin;
    QString m_device; ///< its path
    DeviceDetails m_details;
    bool m_isLooking = false;
    bool m_isRegistered = false; ///< the network has taken the device in
    bool m_isTesting = false;
    bool m_asksForReport = false; ///< of the message that is being sent
    /// Counts the openings, so that a postponed step can be told from a later opening's.
    quint64 m_opening = 0;
};

} // namespace norvane
