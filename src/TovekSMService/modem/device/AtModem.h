#pragma once

#include "TovekSMService/modem/at/AtChannel.h"
#include "TovekSMService/modem/at/AtDialogue.h"
#include "TovekSMService/modem/at/ModemTypes.h"
#include "TovekSMService/modem/at/PortParameter.h"
#include "TovekSMService/modem/device/FlightMode.h"
#include "TovekSMService/modem/device/Mailbox.h"
#include "TovekSMService/modem/device/Modem.h"
#include "TovekSMService/modem/device/PartSubmission.h"
#include "TovekSMService/modem/device/PortSearch.h"
#include "TovekSMService/modem/device/ReportRefusals.h"
#include "TovekSMService/modem/device/SimUnlock.h"
#include "TovekSMService/platform/SerialDevices.h"
#include "TovekSMService/time/Timer.h"

#include <functional>
#include <memory>

namespace norvane {

/// A device behind a port that AT commands are spoken with.
class AtModem : public Modem
{
    Q_OBJECT

public:
    /// @param line  owned by the modem
    /// @param gate  asked before a PIN leaves; outlives the modem
    /// @param ports where a device is looked for that is gone from its place
    /// @param time  outlives the modem
    AtModem(
        std::unique_ptr<SerialLine> line, PinGate &gate, const ModemTimings &timings = {},
        QObject *parent = nullptr,
        PortSearch::Ports ports = [] { return SerialDevices::serialPorts(); },
        TimeSource &time = TimeSource::system());
    ~AtModem() override;

    State state() const override { return m_state; }
    const DeviceDetails &details() const override { return m_details; }
    Unit unit() const override { return Unit::Part; }

    /// @param parameter  a PortParameter
    void open(const DeviceParameter &parameter, const QString &pin, OpenMode mode = OpenMode::Plain,
              const QString &imei = {}) override;
    void close() override;
    bool awaitsPinOutcome() const override { return m_unlock.awaitsPinOutcome(); }

    void send(const SubmitPart &part, Followers followers = Followers::None) override;
    bool asksForFollowers() const override { return m_submission.asksForFollowers(); }
    void refreshDetails() override;

    bool hasMail() const override { return m_mailbox.isDue(); }
    void fetchMail() override;
    void dismissMail(const QList<Arrival> &arrivals) override { m_mailbox.dismiss(arrivals); }
    void deferMail(const QList<Arrival> &arrivals) override { m_mailbox.defer(arrivals); }

    void test() override;

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
