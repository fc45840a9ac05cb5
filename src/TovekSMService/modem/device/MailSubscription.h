#pragma once

#include "TovekSMService/modem/at/AtDialogue.h"
#include "TovekSMService/modem/device/MailRoutes.h"
#include "TovekSMService/time/Timer.h"

#include <QByteArray>
#include <QList>

#include <functional>

namespace norvane {

/// Asks a device to hand over what the network sends, and sees to it that it goes on doing so.
class MailSubscription
{
public:
    /// @param due  called when isCheckDue() has become true by the time that passed
    MailSubscription(AtDialogue &dialogue, const ModemTimings &timings, std::function<void()> due,
                     TimeSource &time);

    /// Finds out what memories the device has and how it announces what comes, and asks for that.
    /// @param done  gets the memories that hold messages or reports
    void setUp(std::function<void(const QList<QByteArray> &memories)> done);

    /// Whether the device hands over status reports.
    bool takesReports() const { return m_routes.report > 0; }
    /// Whether the device says by itself that something came.
    bool announces() const { return m_routes.mode >= 0; }
    /// Whether what is routed to us must be acknowledged, and comes again where it isn't.
    bool isAcknowledged() const { return m_isAcknowledged; }

    /// What both of these call, with whether something may have come unannounced meanwhile.
    using Then = std::function<void(bool isRestored)>;
    /// Tells the device that what it routed is stored.
    void acknowledge(const Then &then);
    bool isCheckDue() const { return m_isCheckDue; }
    /// Looks whether the device still announces what comes, and asks for it again if not.
    void check(const Then &then);

    /// The device has been closed.
    void reset();

private:
    void askRoutes();
    void tryRoutes(QList<MailRoutes> candidates);
    void askService(const MailRoutes &routes, const std::function<void()> &then);
    void askFor(const MailRoutes &routes, const QList<MailRoutes> &others);
    void finish();
    void restore(const Then &then);

    AtDialogue &m_dialogue;
    const ModemTimings m_timings;
    Timer m_check; ///< until the routes are looked at again
    std::function<void(const QList<QByteArray> &)> m_done;
    QList<QByteArray> m_memories;
    MailRoutes m_routes;
    bool m_isAcknowledged = false;
    bool m_isCheckDue = false;
};

} // namespace norvane
