#pragma once

#include "TovekSMService/modem/at/AtChannel.h"
#include "TovekSMService/modem/at/AtDialogue.h"
#include "TovekSMService/modem/at/ModemTypes.h"
#include "TovekSMService/modem/at/PortParameter.h"
#include "TovekSMService/modem/device/FlightMode.h"
#include "TovekSMService/modem/device/Mailbox.h"
#include "TovekSMService/modem/device/PartSubmission.h"
#include "TovekSMService/modem/device/PortSearch.h"
#include "TovekSMService/modem/device/ReportRefusals.h"
#include "TovekSMService/modem/device/SimUnlock.h"
#include "TovekSMService/platform/SerialDevices.h"
#include "TovekSMService/time/Timer.h"

#include <QObject>

#include <functional>
#include <memory>

namespace norvane {

/// A GSM device: from opening its line to sending parts of messages. Everything is asynchronous;
/// each request is answered by one signal, told with each. Failures never close the object: it can
/// be opened again, any time.
class Modem : public QObject
{
    Q_OBJECT

public:
    enum class State {
        Closed,
        Opening,
        Initialising,
        Ready,
        Busy, ///< sending, asking for details, testing, or finding back after a time-out
    };

    enum class OpenMode {
        Plain,
        ResetFunctionality, ///< restarts the device's radio part first (+CFUN=1,1)
    };

    using Followers = PartSubmission::Followers;

    /// @param line  owned by the modem
    /// @param gate  asked before a PIN leaves; outlives the modem
    /// @param ports where a device is looked for that is gone from its place
    /// @param time  outlives the modem
    Modem(
        std::unique_ptr<SerialLine> line, PinGate &gate, const ModemTimings &timings = {},
        QObject *parent = nullptr,
        PortSearch::Ports ports = [] { return SerialDevices::serialPorts(); },
        TimeSource &time = TimeSource::system());
    ~Modem() override;

    State state() const { return m_state; }
    const DeviceDetails &details() const { return m_details; }

    /// Opens the line and brings the device to readiness: `ready` or `failed`. An open modem is
    /// closed first. A device in flight mode is switched on, and its network waited for.
    /// @param imei of the device that is looked for at the other ports when nothing stands at this
    ///             one; empty for no search
    void open(const PortParameter &parameter, const QString &pin, OpenMode mode = OpenMode::Plain,
              const QString &imei = {});

    /// Closes the line. A part in progress is answered with `partFailed`, a test with `tested`;
    /// `failed` doesn't come.
    void close();

    /// A PIN has left, and its outcome is still to come, within a minute: closed now, the modem
    /// could never try that PIN on that SIM again. After it comes `pinResolved`, or `failed`.
    bool awaitsPinOutcome() const { return m_unlock.awaitsPinOutcome(); }

    /// Sends one part: `partAccepted` or `partFailed`, and after the latter `failed` if the device
    /// has been lost. The network may have the part from the moment of this call on, so whatever
    /// must be on record is on record before it.
    /// @param followers with some, the link to the network is kept up behind the part
    void send(const SubmitPart &part, Followers followers = Followers::None);
    /// Whether it makes a difference to send() that a part has followers. It makes none while the
    /// link is kept already.
    bool asksForFollowers() const { return m_submission.asksForFollowers(); }

    /// Asks for network, signal, battery, clock and service centre: `detailsChanged`. Does nothing
    /// unless the modem is ready.
    void refreshDetails();

    /// Whether something from the network is to be read, deleted or acknowledged.
    bool hasMail() const { return m_mailbox.isDue(); }
    /// Does so: `mailRead`, with what was read. Does nothing unless the modem is ready.
    void fetchMail();
    /// These are stored: the device needn't keep them any longer.
    void dismissMail(const QList<Arrival> &arrivals) { m_mailbox.dismiss(arrivals); }
    /// What was read could not be stored.
    void deferMail(const QList<Arrival> &arrivals) { m_mailbox.defer(arrivals); }

    /// Asks the device whether it answers and whether its SIM is unlocked, and for its details:
    /// `tested`.
    void test();

Q_SIGNALS:
    void ready(const DeviceDetails &details);
    void detailsChanged(const DeviceDetails &details);
    /// @param reference the message reference that the device gave, -1 if it gave none
    /// @param report    whether the network will report what becomes of the part
    void partAccepted(int reference, ReportRequest report);
    void partFailed(const SendFailure &failure);
    /// The device can't be used; the modem is closed.
    void failed(const ModemFailure &failure);
    /// @param code   1, or what stands in the way
    /// @param reason of a failure: technical, English, without the PIN
    void tested(bool ok, int code, const DeviceDetails &details, const QString &reason);
    /// A line that the device sent by itself.
    void unsolicited(const QByteArray &line);
    /// hasMail() has become true.
    void mailDue();
    /// The modem is ready again.
    void mailRead(const QList<Arrival> &arrivals);
    /// The SIM has taken its PIN.
    void pinResolved();
    /// The device was told to restart its radio part.
    void functionalityReset();

private:
    void openLine();
    void failToOpen(const LineFailure &failure, const QString &device);
    void searchOrFail(const ModemFailure &failure);
    void startDialogue();
    void onLate();
    void onFound(SyncOutcome outcome);
    void resetFunctionality();
    void setUp();
    void unlock();
    void setUpMessages();
    void readDetails();
    void becomeReady();
    void submit(const SubmitPart &part);
    void onSubmitted(const PartSubmission::Outcome &outcome);
    bool sendWithoutReport(const PartSubmission::Outcome &outcome);
    void recoverThen(const std::function<void()> &tell);
    void reportPart(const PartSubmission::Outcome &outcome);
    void testAfterFindingBack();
    void testSim();
    void onTested(const ModemResult &unlocked);
    void onBroken(const LineFailure &failure);
    void shutDown();
    void fail(const ModemFailure &failure);

    std::unique_ptr<SerialLine> m_line;
    const ModemTimings m_timings;
    AtChannel m_channel;
    AtDialogue m_dialogue;
    FlightMode m_flightMode;
    SimUnlock m_unlock;
    PartSubmission m_submission;
    SubmitPart m_part; ///< that is being sent
    Followers m_followers = Followers::None;
    ReportRefusals m_refusals;
    Mailbox m_mailbox;
    PortSearch m_search;
    Timer m_initialisationLimit;

    State m_state = State::Closed;
    bool m_testing = false;
    OpenMode m_mode = OpenMode::Plain;
    QString m_pin;
    QString m_imei;
    PortParameter m_parameter;
    bool m_searched = false; ///< since it was opened
    DeviceDetails m_details;
    /// Counts the openings, so that a postponed step can be told from a later opening's.
    quint64 m_opening = 0;
};

} // namespace norvane
