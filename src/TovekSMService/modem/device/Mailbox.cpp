#include "TovekSMService/modem/device/Mailbox.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/modem/codec/AnswerParsers.h"
#include "TovekSMService/modem/codec/Hexadecimal.h"

#include <algorithm>
#include <iterator>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Announcements that are read one by one; more of them, and the memory is listed.
constexpr qsizetype maxSingleReads = 4;
/// Announcements that no longer wait for others.
constexpr qsizetype maxWaiting = 16;
/// Lines of a listing behind which there may be more than an answer may have.
constexpr qsizetype fullListing = 200;

/// Where devices keep status reports. What is deleted there unread is no message of anybody's.
constexpr QByteArrayView memoryOfReports = "SR";
/// Reports in a listing that are deleted by one command. Fewer are deleted one by one.
constexpr qsizetype minDeletedTogether = 4;
/// What was routed to us and waits for the disk.
constexpr qsizetype maxRouted = 1000;
/// PDUs that came too short, and are remembered.
constexpr qsizetype maxDoubted = 100;

/// Whether a message was asked for that isn't there (3GPP TS 27.005, 3.2.5: invalid memory index).
bool isEmptyPlace(const AtAnswer &answer)
{
    constexpr int invalidIndex = 321;
    return answer.result.kind == AtResult::Kind::CmsError && answer.result.number == invalidIndex;
}

} // namespace

Mailbox::Mailbox(AtDialogue &dialogue, const ModemTimings &timings, std::function<void()> due,
                 TimeSource &time)
    : m_dialogue(dialogue), m_timings(timings), m_subscription(
                                                    dialogue, timings,
                                                    [this, due] {
                                                        m_due = true;
                                                        due();
                                                    },
                                                    time),
      m_delay(time), m_again(time)
{
    QObject::connect(&m_delay, &Timer::timeout, &m_delay, [this, due] {
        m_due = true;
        due();
    });
    QObject::connect(&m_again, &Timer::timeout, &m_again, [this, due] {
        lookAgain();
        due();
    });
}

void Mailbox::setUp(std::function<void()> done)
{
    reset();
    m_subscription.setUp([this, done = std::move(done)](const QList<QByteArray> &memories) {
        m_memories = memories;
        lookAgain();
        done();
    });
}

void Mailbox::takeLine(const QByteArray &line)
{
    // Where the line lost the PDU, the next one stands for itself.
    if (!m_routedTag.isEmpty() && isHexadecimal(line)) {
        takeRouted(line);
        return;
    }
    m_routedTag.clear();
    if (line.startsWith("+CMT:") || line.startsWith("+CDS:"))
        m_routedTag = line;
    else if (line.startsWith("+CMTI:") || line.startsWith("+CDSI:"))
        announce(line);
}

/// What came too short is not acknowledged, and comes again. Where nothing is acknowledged, a part
/// of it is better than none.
void Mailbox::takeRouted(const QByteArray &pdu)
{
    const QByteArray tag = std::exchange(m_routedTag, QByteArray());
    const QList<QByteArray> fields = AnswerParsers::fields({tag}, tag.left(4));
    if (m_subscription.isAcknowledged() && isTruncated(pdu, fields.value(fields.size() - 1)) &&
        !isTrusted(pdu))
        return;
    m_routed.append({pdu, {}, -1});
    m_due = true;
}

/// A line that lost something loses something else the next time: what comes twice is what the
/// device has, though it counts its octets in another way.
bool Mailbox::isTrusted(const QByteArray &pdu)
{
    if (m_doubted.remove(pdu))
        return true;
    qCWarning(logDevice) << "the device handed over fewer octets than it says";
    if (m_doubted.size() >= maxDoubted)
        m_doubted.clear();
    m_doubted.insert(pdu);
    return false;
}

void Mailbox::announce(const QByteArray &line)
{
    const QList<QByteArray> fields = AnswerParsers::fields({line}, line.left(5));
    bool isNumber = false;
    const int index = fields.value(1).toInt(&isNumber);
    if (!isNumber || index < 0 || fields.constFirst().isEmpty())
        return;
    const Place place(fields.constFirst(), index);
    m_kept.remove(place);
    if (!m_notices.contains(place))
        m_notices.append(place);
    if (m_notices.size() >= maxWaiting)
        m_due = true;
    else
        wait();
}

void Mailbox::wait()
{
    if (!m_due && !m_delay.isActive())
        m_delay.start(m_timings.mailDelayMs);
}

bool Mailbox::isDue() const
{
    return m_due;
}

void Mailbox::dismiss(const QList<Arrival> &arrivals)
{
    m_toDiscard += arrivals;
    m_due = m_due || !arrivals.isEmpty();
}

void Mailbox::defer(const QList<Arrival> &arrivals)
{
    QList<Arrival> routed;
    std::copy_if(arrivals.begin(), arrivals.end(), std::back_inserter(routed),
                 [](const Arrival &arrival) { return arrival.isRouted(); });
    m_routed = (routed + m_routed).mid(0, maxRouted);
    retryLater();
}

void Mailbox::retryLater()
{
    m_again.start(m_timings.mailAgainMs);
}

void Mailbox::lookAgain()
{
    m_toList = m_memories;
    m_due = m_due || !m_toList.isEmpty() || !m_routed.isEmpty();
}

void Mailbox::reset()
{
    m_delay.stop();
    m_again.stop();
    m_subscription.reset();
    m_read = nullptr;
    m_memories.clear();
    m_selected.clear();
    m_routedTag.clear();
    m_routed.clear();
    m_notices.clear();
    m_toList.clear();
    m_toDiscard.clear();
    m_kept.clear();
    m_doubted.clear();
    m_listed.clear();
    m_deleted.clear();
    m_deletesRead = true;
    m_arrivals.clear();
    m_due = false;
}

void Mailbox::work(Read read)
{
    m_delay.stop();
    m_due = false;
    m_read = std::move(read);
    m_arrivals = std::exchange(m_routed, {});
    m_noticesLeft = maxSingleReads;
    step();
}

/// The next step of the turn. What is stored goes first: it may make room for what waits in the
/// network.
void Mailbox::step()
{
    if (!m_toDiscard.isEmpty())
        discardNext();
    else if (m_subscription.isCheckDue())
        m_subscription.check([this](bool isRestored) { stepAfter(isRestored); });
    else if (!m_toList.isEmpty() && m_noticesLeft == maxSingleReads)
        listMemory(m_toList.takeFirst());
    else if (m_notices.size() > m_noticesLeft && m_noticesLeft == maxSingleReads)
        listMemory(m_notices.constFirst().first);
    else if (!m_notices.isEmpty() && m_noticesLeft-- > 0)
        readNotice(m_notices.takeFirst());
    else
        endTurn();
}

void Mailbox::stepAfter(bool mayHaveMore)
{
    if (mayHaveMore)
        lookAgain();
    step();
}

void Mailbox::discardNext()
{
    const QList<Arrival> listed = std::exchange(m_listed, {});
    const bool areAllStored =
        std::all_of(listed.begin(), listed.end(),
                    [this](const Arrival &arrival) { return m_toDiscard.contains(arrival); });
    if (!listed.isEmpty() && areAllStored) {
        deleteRead(listed);
        return;
    }
    const Arrival arrival = m_toDiscard.takeFirst();
    if (arrival.isRouted())
        m_subscription.acknowledge([this](bool isRestored) { stepAfter(isRestored); });
    else
        deleteOne({arrival.memory, arrival.index});
}

void Mailbox::deleteOne(const Place &place)
{
    select(place.first, [this, place](bool selected) {
        if (!selected) {
            retryLater();
            step();
            return;
        }
        m_dialogue.ask({"AT+CMGD=" + QByteArray::number(place.second), m_timings.slowCommandMs, {}},
                       [this, place](const AtAnswer &answer) { onDeleted(place, answer); });
    });
}

/// Deletes what was read of a memory by one command, and leaves what came since (3GPP TS 27.005,
/// 3.5.4: <delflag> 1). Where the device doesn't, the next listing shows it.
void Mailbox::deleteRead(const QList<Arrival> &listed)
{
    select(listed.constFirst().memory, [this, listed](bool selected) {
        if (!selected) {
            step();
            return;
        }
        const QByteArray place = QByteArray::number(listed.constFirst().index);
        m_dialogue.ask({"AT+CMGD=" + place + ",1", m_timings.slowCommandMs, {}},
                       [this, listed](const AtAnswer &answer) {
                           m_deletesRead = answer.isOk();
                           if (m_deletesRead) {
                               m_toDiscard.removeIf([&listed](const Arrival &arrival) {
                                   return listed.contains(arrival);
                               });
                               m_deleted = listed;
                               m_toList.append(listed.constFirst().memory); // is it empty?
                           }
                           step();
                       });
    });
}

void Mailbox::onDeleted(const Place &place, const AtAnswer &answer)
{
    if (!answer.isOk()) {
        qCWarning(logDevice) << "the device doesn't delete" << place.second << "of" << place.first;
        m_kept.insert(place);
    }
    step();
}

void Mailbox::select(const QByteArray &memory, const std::function<void(bool)> &then)
{
    if (m_selected == memory) {
        then(true);
        return;
    }
    m_dialogue.ask({"AT+CPMS=\"" + memory + '"', m_timings.slowCommandMs, {}},
                   [this, memory, then](const AtAnswer &answer) {
                       bool isNumber = false;
                       const QList<QByteArray> fields =
                           AnswerParsers::fields(answer.lines, "+CPMS");
                       m_used = fields.value(0).toInt(&isNumber);
                       if (!isNumber)
                           m_used = -1;
                       m_selected = answer.isOk() ? memory : QByteArray();
                       then(answer.isOk());
                   });
}

void Mailbox::readNotice(const Place &place)
{
    select(place.first, [this, place](bool selected) {
        if (!selected) {
            retryLater();
            step();
            return;
        }
        m_dialogue.ask(
            {"AT+CMGR=" + QByteArray::number(place.second), m_timings.slowCommandMs, {}},
            [this, place](const AtAnswer &answer) {
                if (answer.isOk())
                    take(MailListing::of(answer.lines, "+CMGR", place.first, place.second));
                else if (!isEmptyPlace(answer))
                    retryLater();
                step();
            });
    });
}

/// What can't be understood is looked at again later.
void Mailbox::take(const MailListing &listing)
{
    QList<Arrival> arrivals = listing.arrivals;
    bool isDoubtful = listing.isGarbled;
    for (const Arrival &arrival : listing.truncated) {
        if (isTrusted(arrival.pdu))
            arrivals.append(arrival);
        else
            isDoubtful = true;
    }
    for (const Arrival &arrival : arrivals)
        if (!m_kept.contains({arrival.memory, arrival.index}))
            m_arrivals.append(arrival);
    if (isDoubtful)
        retryLater();
}

/// The memory is selected anew, as the answer tells how much it holds.
void Mailbox::listMemory(const QByteArray &memory)
{
    m_noticesLeft = 0;
    m_selected.clear();
    select(memory, [this, memory](bool selected) {
        // What is announced from now on may not be in the listing.
        m_notices.removeIf([&](const Place &place) { return place.first == memory; });
        if (!selected) {
            step();
            return;
        }
        m_dialogue.ask({"AT+CMGL=4"_ba, m_timings.listMs, {}},
                       [this, memory, used = m_used](const AtAnswer &answer) {
                           onListed(memory, used, answer);
                           step();
                       });
    });
}

void Mailbox::onListed(const QByteArray &memory, int used, const AtAnswer &answer)
{
    const MailListing listing = MailListing::of(answer.lines, "+CMGL", memory, -1);
    take(listing);
    const bool isLong = answer.lines.size() >= fullListing;
    if (answer.end == AtAnswer::End::Final && !answer.isOk())
        m_again.start(m_timings.mailPollMs); // it may always refuse
    else if (!answer.isOk())
        retryLater();
    else if (isLong && !m_arrivals.isEmpty())
        m_toList.append(memory);

    const qsizetype count = listing.arrivals.size();
    for (const Arrival &arrival : listing.arrivals)
        m_deletesRead = m_deletesRead && !m_deleted.contains(arrival);
    m_deleted.clear();
    const bool isAll = answer.isOk() && !isLong && listing.isWhole() && used >= 0 && count >= used;
    if (memory == memoryOfReports && m_deletesRead && isAll && count >= minDeletedTogether)
        m_listed = listing.arrivals;
}

void Mailbox::endTurn()
{
    m_due = m_due || !m_toDiscard.isEmpty() || !m_toList.isEmpty() || !m_routed.isEmpty();
    if (!m_notices.isEmpty())
        wait();
    if (!m_subscription.announces() && !m_again.isActive())
        m_again.start(m_timings.mailPollMs);
    const QList<Arrival> arrivals = std::exchange(m_arrivals, {});
    std::exchange(m_read, nullptr)(arrivals);
}

} // namespace norvane
