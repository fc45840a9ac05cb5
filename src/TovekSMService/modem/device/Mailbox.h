#pragma once

#include "TovekSMService/modem/at/AtDialogue.h"
#include "TovekSMService/modem/device/MailRoutes.h"
#include "TovekSMService/time/Timer.h"

#include <QByteArray>
#include <QList>
#include <QMetaType>
#include <QSet>

#include <functional>
#include <utility>

namespace norvane {

/// Something that came from the network, as the device handed it over.
struct Arrival
{
    /// Service centre address and TPDU, hexadecimal.
    QByteArray pdu;
    /// Where the device keeps it; empty for what was routed to us and is kept nowhere.
    QByteArray memory;
    int index = -1;

    bool isRouted() const { return memory.isEmpty(); }
    bool operator==(const Arrival &) const = default;
};

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
    bool takesReports() const { return m_routes.report > 0; }
    /// Whether something is to be read, deleted or acknowledged now. What was announced waits a
    /// little for others, so that one look serves them all.
    bool isDue() const;
    /// Deletes and acknowledges what is stored, and reads some of what waits.
    void work(Read read);
    /// These are stored: the device needn't keep them.
    void dismiss(const QList<Arrival> &arrivals);
    /// What was read could not be stored: it is read again later, where the device has it still.
    void defer();
    /// Looks into all memories again.
    void lookAgain();

    /// The device has been closed.
    void reset();

    /// What an answer shows of a memory.
    struct Listing
    {
        QList<Arrival> arrivals;
        bool isGarbled = false; ///< something stands there that can't be understood
    };

private:
    using Place = std::pair<QByteArray, int>;

    void askRoutes();
    void tryRoutes(QList<MailRoutes> candidates);
    void askService(const MailRoutes &routes, const std::function<void()> &then);
    void askFor(const MailRoutes &routes, const QList<MailRoutes> &others);
    void finishSetUp();
    void checkRoutes();
    void restoreRoutes();

    void announce(const QByteArray &line);
    void take(const Listing &listing);
    void step();
    void discardNext();
    void acknowledge();
    void onDeleted(const Place &place, const AtAnswer &answer);
    void readNotice(const Place &place);
    void listMemory(const QByteArray &memory);
    void select(const QByteArray &memory, const std::function<void(bool)> &then);
    void endTurn();
    void wait();

    AtDialogue &m_dialogue;
    const ModemTimings m_timings;
    Timer m_delay; ///< of what was announced
    Timer m_again; ///< until what could not be read or stored is looked at again
    Timer m_check; ///< until the routes are looked at again

    std::function<void()> m_setUp;
    QList<QByteArray> m_memories; ///< that hold messages or reports
    QByteArray m_selected;        ///< the memory that the device reads from
    MailRoutes m_routes;
    bool m_acknowledges = false; ///< the device waits for +CNMA
    bool m_checkDue = false;

    QByteArray m_routedTag; ///< of the line whose second one is due
    QList<Arrival> m_routed;
    QList<Place> m_notices;
    QList<QByteArray> m_toList;
    QList<Arrival> m_toDiscard;
    QSet<Place> m_kept; ///< read already, and the device won't delete them
    bool m_due = false;

    Read m_read;
    QList<Arrival> m_arrivals; ///< of the turn in progress
    int m_noticesLeft = 0;     ///< in the turn in progress
};

} // namespace norvane

Q_DECLARE_METATYPE(norvane::Arrival)
