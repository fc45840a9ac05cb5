#pragma once

#include "gsm-simulator/Address.h"
#include "gsm-simulator/ModemSettings.h"

#include <QByteArray>
#include <QDateTime>

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <utility>

namespace norvane {

namespace simulator {

struct SubmittedPart;

/// What the network holds for this subscriber until the modem takes it: messages in one lane,
/// status reports in the other, each in the order of their times.
class ServiceCentre
{
public:
    enum Lane : std::size_t { Messages, Reports };

    struct Item
    {
        std::pair<qint64, qint64> key; ///< when it is due, and its order among those of that time
        QByteArray tpdu;
    };

    /// Items beyond which a lane takes no more.
    static constexpr std::size_t maxItems = 10'000;

    explicit ServiceCentre(const ReportSettings &settings) : m_settings(settings) {}

    /// A message has been accepted: keeps what a report needs, and makes the reports that it asks
    /// for.
    void accept(const SubmittedPart &part, int reference, const QDateTime &now);

    /// A report on the last message that was given that reference, due now.
    /// @return whether there was such a message, and a place for the report
    bool report(int reference, int status, const QDateTime &now);

    /// @return whether there was a place for it
    bool add(Lane lane, const QByteArray &tpdu, const QDateTime &due);

    /// Takes the first item that is due, if any; the lane may be held back.
    std::optional<Item> take(Lane lane, const QDateTime &now);

    /// Gives back what the modem hasn't accepted, to be delivered again from `until` on.
    void giveBack(Lane lane, const Item &item, const QDateTime &until);

    /// The modem has a place for messages again.
    void memoryAvailable();

    /// The modem can't be offered a lane's items now; nothing tells when it can.
    void setWaiting(Lane lane, bool waiting) { m_lanes.at(lane).waiting = waiting; }

    /// When an item becomes due next, of the lanes that don't wait for the modem.
    std::optional<QDateTime> nextDue() const;

    std::size_t count(Lane lane) const { return m_lanes.at(lane).items.size(); }
    std::size_t room(Lane lane) const { return maxItems - std::min(maxItems, count(lane)); }

    /// How many parts have been accepted.
    qint64 acceptedCount() const { return m_acceptedCount; }

private:
    struct Sent
    {
        Address recipient;
        QDateTime time;
    };

    struct LaneState
    {
        std::map<std::pair<qint64, qint64>, QByteArray> items;
        QDateTime heldUntil;
        bool waiting = false;
    };

    QByteArray reportOn(int reference, int status, const QDateTime &time) const;
    void postpone(const QDateTime &now);

    ReportSettings m_settings;
    std::map<int, Sent> m_sent; ///< by reference, of which there are 256
    std::array<LaneState, 2> m_lanes;
    qint64 m_acceptedCount = 0;
    qint64 m_order = 0;
    qint64 m_lastRequest = 0; ///< when a report was asked for last
};

} // namespace simulator

} // namespace norvane
