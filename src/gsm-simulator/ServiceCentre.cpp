#include "gsm-simulator/ServiceCentre.h"

#include "gsm-simulator/PduDecoder.h"
#include "gsm-simulator/StatusReport.h"

#include <algorithm>

namespace norvane {

namespace simulator {

void ServiceCentre::accept(const SubmittedPart &part, int reference, const QDateTime &now)
{
    ++m_acceptedCount;
    m_sent[reference] = {{part.number, part.typeOfNumber}, now};
    if (!part.reportRequested || m_settings.count == 0)
        return;
    if (m_settings.order == ReportOrder::Reversed)
        postpone(now);
    QDateTime due = now.addMSecs(m_settings.delay.count());
    if (m_settings.firstStatus >= 0) {
        add(Reports, reportOn(reference, m_settings.firstStatus, due), due);
        due = due.addMSecs(m_settings.delay.count());
    }
    for (int i = 0; i < m_settings.count; ++i)
        add(Reports, reportOn(reference, m_settings.status, due), due);
}

bool ServiceCentre::report(int reference, int status, const QDateTime &now)
{
    return m_sent.contains(reference) && add(Reports, reportOn(reference, status, now), now);
}

QByteArray ServiceCentre::reportOn(int reference, int status, const QDateTime &time) const
{
    const Sent &sent = m_sent.at(reference);
    return reportTpdu({reference, sent.recipient, sent.time, time, status});
}

/// The reports of messages that follow each other closely come together, the last one first: those
/// still to come are put off by the time that has passed since the message before.
void ServiceCentre::postpone(const QDateTime &now)
{
    auto &items = m_lanes.at(Reports).items;
    const qint64 moment = now.toMSecsSinceEpoch();
    const qint64 passed = moment - std::exchange(m_lastRequest, moment);
    std::map<std::pair<qint64, qint64>, QByteArray> postponed;
    for (auto &[key, tpdu] : items) {
        const qint64 due = key.first > moment ? key.first + passed : key.first;
        postponed.insert({{due, key.second}, std::move(tpdu)});
    }
    items = std::move(postponed);
}

bool ServiceCentre::add(Lane lane, const QByteArray &tpdu, const QDateTime &due)
{
    if (room(lane) == 0)
        return false;
    const bool reversed = lane == Reports && m_settings.order == ReportOrder::Reversed;
    ++m_order;
    m_lanes.at(lane).items.insert({{due.toMSecsSinceEpoch(), reversed ? -m_order : m_order}, tpdu});
    return true;
}

std::optional<ServiceCentre::Item> ServiceCentre::take(Lane lane, const QDateTime &now)
{
    LaneState &state = m_lanes.at(lane);
    if (state.items.empty() || (state.heldUntil.isValid() && now < state.heldUntil))
        return std::nullopt;
    state.heldUntil = {};
    const auto first = state.items.begin();
    if (first->first.first > now.toMSecsSinceEpoch())
        return std::nullopt;
    Item item{first->first, first->second};
    state.items.erase(first);
    return item;
}

void ServiceCentre::giveBack(Lane lane, const Item &item, const QDateTime &until)
{
    LaneState &state = m_lanes.at(lane);
    state.items.insert({item.key, item.tpdu});
    state.heldUntil = until;
}

void ServiceCentre::memoryAvailable()
{
    for (LaneState &lane : m_lanes)
        lane.heldUntil = {};
}

std::optional<QDateTime> ServiceCentre::nextDue() const
{
    std::optional<QDateTime> next;
    for (const LaneState &lane : m_lanes) {
        if (lane.waiting || lane.items.empty())
            continue;
        QDateTime due = QDateTime::fromMSecsSinceEpoch(lane.items.begin()->first.first);
        if (lane.heldUntil.isValid())
            due = std::max(due, lane.heldUntil);
        next = next ? std::min(*next, due) : due;
    }
    return next;
}

} // namespace simulator

} // namespace norvane
