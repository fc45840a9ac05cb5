#pragma once

#include "TovekSMService/modem/at/AtDialogue.h"
#include "TovekSMService/modem/device/MailListing.h"
#include "TovekSMService/modem/device/MailSubscription.h"
#include "TovekSMService/time/Timer.h"

#include <QByteArray>
#include <QList>
#include <QSet>

#include <functional>
#include <utility>

namespace norvane {

/// What the network sent to a device: messages and status reports, in its memories or routed to us.
/// Nothing is deleted or acknowledged before whoever took it has said that it is stored.
class Mailbox
{
public:
    using Read = std::function<void(const QList<Arrival> &)>;

    /// @param due  called when isDue() has become true by the time that passed
    Mailbox(AtDialogue &dialogue, const ModemTimings &timings, std::function<void()> due,
            TimeSource &time);

    /// Finds out what memories the device has and how it announces what comes, and asks for that.
    /// What waits in the memories is due afterwards.
    void setUp(std::function<void()> done);

    /// A line that the device sent by itself.
    void takeLine(const QByteArray &line);

    /// Whether the device hands over status reports.
    bool takesReports() const { return m_subscription.takesReports(); }
    /// Whether something is to be read, deleted or acknowledged now. What was announced waits a
    /// little for others, so that one look serves them all.
    bool isDue() const;
    /// Deletes and acknowledges what is stored, and reads some of what waits.
    void work(Read read);
    /// These are stored: the device needn't keep them.
    void dismiss(const QList<Arrival> &arrivals);
    /// What was read could not be stored: it is read again later, and what the device doesn't keep
    /// is handed out again.
    void defer(const QList<Arrival> &arrivals);
    /// Looks into all memories again.
    void lookAgain();

    /// The device has been closed.
    void reset();

private:
    using Place = std::pair<QByteArray, int>;

    void announce(const QByteArray &line);
    void takeRouted(const QByteArray &pdu);
    bool isTrusted(const QByteArray &pdu);
    void take(const MailListing &listing);
    void retryLater();
    void step();
    void stepAfter(bool mayHaveMore);
    void discardNext();
    void deleteOne(const Place &place);
    void deleteRead(const QList<Arrival> &listed);
    void onDeleted(const Place &place, const AtAnswer &answer);
    void readNotice(const Place &place);
    void listMemory(const QByteArray &memory);
    void onListed(const QByteArray &memory, int used, const AtAnswer &answer);
    void select(const QByteArray &memory, const std::function<void(bool)> &then);
    void endTurn();
    void wait();

    AtDialogue &m_dialogue;
    const ModemTimings m_timings;
    MailSubscription m_subscription;
    Timer m_delay; ///< of what was announced
    Timer m_again; ///< until what could not be read or stored is looked at again

    QList<QByteArray> m_memories; ///< that hold messages or reports
    QByteArray m_selected;        ///< the memory that the device reads from
    int m_used = -1;              ///< how many it held then; -1 where the device doesn't say

    QByteArray m_routedTag; ///< the line whose second one is due
    QList<Arrival> m_routed;
    QList<Place> m_notices;
    QList<QByteArray> m_toList;
    QList<Arrival> m_toDiscard;
    QSet<Place> m_kept;         ///< read already, and the device won't delete them
    QSet<QByteArray> m_doubted; ///< PDUs that came too short once
    QList<Arrival> m_listed;    ///< all that a memory of reports held when it was listed last
    QList<Arrival> m_deleted;   ///< by one command
    bool m_deletesRead = true;  ///< one command deletes all that was read
    bool m_due = false;

    Read m_read;
    QList<Arrival> m_arrivals; ///< of the turn in progress
    int m_noticesLeft = 0;     ///< in the turn in progress
};

} // namespace norvane
