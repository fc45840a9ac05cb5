#include "TovekSMService/modem/device/Mailbox.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/modem/codec/AnswerParsers.h"
#include "TovekSMService/modem/codec/Hexadecimal.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Announcements that are read one by one; more of them, and the memory is listed.
constexpr qsizetype maxSingleReads = 4;
/// Announcements that no longer wait for others.
constexpr qsizetype maxWaiting = 16;
/// Lines of a listing behind which there may be more than an answer may have.
constexpr qsizetype fullListing = 200;

/// Kinds of +CMGL and +CMGR in PDU mode (3GPP TS 27.005, 3.1): received, unread and read. Others
/// are messages that somebody wrote with the device.
constexpr int receivedRead = 1;

/// Memories that hold what comes (3GPP TS 27.005, 3.1), in the order in which they are looked at.
/// "MT" is no place of its own but several of the others together.
constexpr QByteArrayView knownMemories[] = {"SR", "SM", "ME"};

/// Pairs of lines: what stands behind the tag, and the PDU.
/// @param index  of what was read alone; -1 where each tag names its own
Mailbox::Listing listingOf(const QList<QByteArray> &lines, QByteArrayView tag,
                           const QByteArray &memory, int index)
{
    Mailbox::Listing listing;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        QList<QByteArray> fields = AnswerParsers::fields({lines.at(i)}, tag);
        if (fields.isEmpty())
            continue;
        bool isPlace = true;
        const int place = index >= 0 ? index : fields.takeFirst().toInt(&isPlace);
        const QByteArray pdu = lines.value(i + 1).trimmed();
        if (isPlace && fields.value(fields.size() - 1) == "0")
            continue; // an empty place
        if (!isPlace || place < 0 || fields.isEmpty() || !isHexadecimal(pdu)) {
            listing.isGarbled = true;
            continue;
        }
        bool isNumber = false;
        const int kind = fields.constFirst().toInt(&isNumber);
        if (isNumber && kind >= 0 && kind <= receivedRead)
            listing.arrivals.append({pdu, memory, place});
        ++i;
    }
    return listing;
}

/// Whether a message was asked for that isn't there (3GPP TS 27.005, 3.2.5: invalid memory index).
bool isEmptyPlace(const AtAnswer &answer)
{
    constexpr int invalidIndex = 321;
    return answer.result.kind == AtResult::Kind::CmsError && answer.result.number == invalidIndex;
}

} // namespace

Mailbox::Mailbox(AtDialogue &dialogue, const ModemTimings &timings, std::function<void()> due,
                 TimeSource &time)
    : m_dialogue(dialogue), m_timings(timings), m_delay(time), m_again(time), m_check(time)
{
    QObject::connect(&m_delay, &Timer::timeout, &m_delay, [this, due] {
        m_due = true;
        due();
    });
    QObject::connect(&m_again, &Timer::timeout, &m_again, [this, due] {
        lookAgain();
        due();
    });
    QObject::connect(&m_check, &Timer::timeout, &m_check, [this, due] {
        m_checkDue = true;
        m_due = true;
        due();
    });
}

void Mailbox::setUp(std::function<void()> done)
{
    reset();
    m_setUp = std::move(done);
    m_dialogue.ask({"AT+CPMS=?"_ba, m_timings.commandMs, {}}, [this](const AtAnswer &answer) {
        const QList<QByteArray> offered = AnswerParsers::textLists(answer.lines, "+CPMS").value(0);
        for (const QByteArrayView memory : knownMemories)
            if (offered.contains(memory))
                m_memories.append(memory.toByteArray());
        askRoutes();
    });
}

void Mailbox::askRoutes()
{
    m_dialogue.ask({"AT+CNMI=?"_ba, m_timings.commandMs, {}}, [this](const AtAnswer &answer) {
        const MailRoutes best = MailRoutes::bestOf(answer.lines);
        tryRoutes(best.mode < 0 ? MailRoutes::candidates() : QList{best});
    });
}

void Mailbox::tryRoutes(QList<MailRoutes> candidates)
{
    if (candidates.isEmpty()) {
        qCInfo(logDevice) << "the device doesn't announce what comes: its memories are looked into";
        finishSetUp();
        return;
    }
    const MailRoutes routes = candidates.takeFirst();
    askService(routes, [this, routes, candidates] { askFor(routes, candidates); });
}

/// What is routed to us is lost with a crash unless the service waits for our word
/// (3GPP TS 27.005, 3.2.1). It does so from the first report on, which may follow the routes at
/// once; and a service that was left waiting by an engine before us is not let off.
void Mailbox::askService(const MailRoutes &routes, const std::function<void()> &then)
{
    const bool routed = routes.routes();
    m_dialogue.ask({routed ? "AT+CSMS=1"_ba : "AT+CSMS=0"_ba, m_timings.commandMs, {}},
                   [this, routed, then](const AtAnswer &answer) {
                       m_acknowledges = routed && answer.isOk();
                       then();
                   });
}

void Mailbox::askFor(const MailRoutes &routes, const QList<MailRoutes> &others)
{
    m_dialogue.ask({routes.command(), m_timings.commandMs, {}},
                   [this, routes, others](const AtAnswer &answer) {
                       if (!answer.isOk()) {
                           tryRoutes(others);
                           return;
                       }
                       m_routes = routes;
                       if (routes.report <= 0)
                           qCInfo(logDevice) << "the device announces no status reports";
                       if (m_acknowledges)
                           m_check.start(m_timings.routesCheckMs);
                       finishSetUp();
                   });
}

void Mailbox::finishSetUp()
{
    lookAgain();
    std::exchange(m_setUp, nullptr)();
}

void Mailbox::takeLine(const QByteArray &line)
{
    // Where the line lost the PDU, the next one stands for itself.
    if (!std::exchange(m_routedTag, QByteArray()).isEmpty() && isHexadecimal(line)) {
        m_routed.append({line, {}, -1});
        m_due = true;
        return;
    }
    if (line.startsWith("+CMT:") || line.startsWith("+CDS:"))
        m_routedTag = line.left(4);
    else if (line.startsWith("+CMTI:") || line.startsWith("+CDSI:"))
        announce(line);
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

void Mailbox::defer()
{
    m_again.start(m_timings.mailAgainMs);
}

void Mailbox::lookAgain()
{
    m_toList = m_memories;
    m_due = m_due || !m_toList.isEmpty();
}

void Mailbox::reset()
{
    m_delay.stop();
    m_again.stop();
    m_check.stop();
    m_checkDue = false;
    m_setUp = nullptr;
    m_read = nullptr;
    m_memories.clear();
    m_selected.clear();
    m_routes = {};
    m_acknowledges = false;
    m_routedTag.clear();
    m_routed.clear();
    m_notices.clear();
    m_toList.clear();
    m_toDiscard.clear();
    m_kept.clear();
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
    else if (std::exchange(m_checkDue, false))
        checkRoutes();
    else if (!m_toList.isEmpty() && m_noticesLeft == maxSingleReads)
        listMemory(m_toList.takeFirst());
    else if (m_notices.size() > m_noticesLeft && m_noticesLeft == maxSingleReads)
        listMemory(m_notices.constFirst().first);
    else if (!m_notices.isEmpty() && m_noticesLeft-- > 0)
        readNotice(m_notices.takeFirst());
    else
        endTurn();
}

void Mailbox::discardNext()
{
    const Arrival arrival = m_toDiscard.takeFirst();
    if (arrival.isRouted()) {
        acknowledge();
        return;
    }
    const Place place(arrival.memory, arrival.index);
    select(arrival.memory, [this, place](bool selected) {
        if (!selected) {
            step();
            return;
        }
        m_dialogue.ask({"AT+CMGD=" + QByteArray::number(place.second), m_timings.slowCommandMs, {}},
                       [this, place](const AtAnswer &answer) { onDeleted(place, answer); });
    });
}

void Mailbox::acknowledge()
{
    if (!m_acknowledges) {
        step();
        return;
    }
    m_dialogue.ask({"AT+CNMA"_ba, m_timings.commandMs, {}}, [this](const AtAnswer &answer) {
        if (answer.isOk()) {
            step();
            return;
        }
        // Our word came too late: the device routes nothing any more, and the network sends again
        // what it holds (3GPP TS 27.005, 3.4.1).
        restoreRoutes();
    });
}

/// A device that waited for our word in vain announces nothing any more. That may come about after
/// the routes were set: it was an engine before us that owed the word, or the line lost what the
/// device said.
void Mailbox::checkRoutes()
{
    m_check.start(m_timings.routesCheckMs);
    m_dialogue.ask({"AT+CNMI?"_ba, m_timings.commandMs, {}}, [this](const AtAnswer &answer) {
        if (answer.isOk() && !m_routes.areIn(answer.lines))
            restoreRoutes();
        else
            step();
    });
}

/// What was stored meanwhile has not been announced.
void Mailbox::restoreRoutes()
{
    lookAgain();
    m_dialogue.ask({m_routes.command(), m_timings.commandMs, {}},
                   [this](const AtAnswer &) { step(); });
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
                       m_selected = answer.isOk() ? memory : QByteArray();
                       then(answer.isOk());
                   });
}

void Mailbox::readNotice(const Place &place)
{
    select(place.first, [this, place](bool selected) {
        if (!selected) {
            defer();
            step();
            return;
        }
        m_dialogue.ask({"AT+CMGR=" + QByteArray::number(place.second), m_timings.slowCommandMs, {}},
                       [this, place](const AtAnswer &answer) {
                           if (answer.isOk())
                               take(listingOf(answer.lines, "+CMGR", place.first, place.second));
                           else if (!isEmptyPlace(answer))
                               defer();
                           step();
                       });
    });
}

/// What can't be understood is looked at again later.
void Mailbox::take(const Listing &listing)
{
    for (const Arrival &arrival : listing.arrivals)
        if (!m_kept.contains({arrival.memory, arrival.index}))
            m_arrivals.append(arrival);
    if (listing.isGarbled)
        defer();
}

void Mailbox::listMemory(const QByteArray &memory)
{
    m_noticesLeft = 0;
    select(memory, [this, memory](bool selected) {
        if (!selected) {
            m_notices.removeIf([&](const Place &place) { return place.first == memory; });
            step();
            return;
        }
        // What is announced from now on may not be in the listing.
        m_notices.removeIf([&](const Place &place) { return place.first == memory; });
        m_dialogue.ask({"AT+CMGL=4"_ba, m_timings.listMs, {}},
                       [this, memory](const AtAnswer &answer) {
                           take(listingOf(answer.lines, "+CMGL", memory, -1));
                           if (!answer.isOk())
                               defer();
                           else if (answer.lines.size() >= fullListing && !m_arrivals.isEmpty())
                               m_toList.append(memory);
                           step();
                       });
    });
}

void Mailbox::endTurn()
{
    m_due = m_due || !m_toDiscard.isEmpty() || !m_toList.isEmpty() || !m_routed.isEmpty();
    if (!m_notices.isEmpty())
        wait();
    const QList<Arrival> arrivals = std::exchange(m_arrivals, {});
    std::exchange(m_read, nullptr)(arrivals);
}

} // namespace norvane
