#pragma once

#include "TovekSMService/modem/at/ModemTimings.h"
#include "TovekSMService/modem/at/ModemTypes.h"
#include "TovekSMService/modem/codec/SubmitPdu.h"
#include "TovekSMService/modem/manager/ManagerBus.h"

#include <functional>

namespace norvane {

/// Hands one message to the modem manager: lets it be created, sent, and deleted again.
class ManagedSubmission
{
public:
    struct Outcome
    {
        bool isAccepted = false;
        int reference = -1;           ///< of an accepted message; -1 if the manager gave none
        SendFailure failure;          ///< of one that isn't accepted
        bool isReportRefused = false; ///< it was taken without the request that it was refused with
    };
    using Done = std::function<void(const Outcome &)>;

    explicit ManagedSubmission(const ModemTimings &timings) : m_timings(timings) {}

    /// Once at a time.
    /// @param part  one that stands for a whole message
    /// @param bus   outlives this object, or its stop()
    void start(ManagerBus &bus, const QString &device, const SubmitPart &part, Done done);
    /// The device is gone or closed: answers a message in progress.
    void stop(const QString &text);

private:
    enum class Stage { Idle, Creating, Sending, Taken };

    void create();
    void onCreated(const QDBusMessage &reply);
    void onSent(const QDBusMessage &reply);
    bool sendWithoutReport(const SendFailure &failure);
    void onReference(const QDBusMessage &reply);
    void deleteMessage();
    void finish(const Outcome &outcome);
    void fail(const SendFailure &failure);

    const ModemTimings m_timings;
    ManagerBus *m_bus = nullptr;
    QString m_device;
    WholeMessage m_message;
    bool m_asksForReport = false;
    bool m_isReportRefused = false;
    Stage m_stage = Stage::Idle;
    QString m_path; ///< of the message's object
    Done m_done;
};

} // namespace norvane
