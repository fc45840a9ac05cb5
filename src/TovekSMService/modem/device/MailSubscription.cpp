#include "TovekSMService/modem/device/MailSubscription.h"

#include "TovekSMService/log/Categories.h"
#include "TovekSMService/modem/codec/AnswerParsers.h"

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Memories that hold what comes (3GPP TS 27.005, 3.1), in the order in which they are looked at.
/// "MT" is no place of its own but several of the others together.
constexpr QByteArrayView knownMemories[] = {"SR", "SM", "ME"};

} // namespace

MailSubscription::MailSubscription(AtDialogue &dialogue, const ModemTimings &timings,
                                   std::function<void()> due, TimeSource &time)
    : m_dialogue(dialogue), m_timings(timings), m_check(time)
{
    QObject::connect(&m_check, &Timer::timeout, &m_check, [this, due = std::move(due)] {
        m_isCheckDue = true;
        due();
    });
}

void MailSubscription::setUp(std::function<void(const QList<QByteArray> &memories)> done)
{
    reset();
    m_done = std::move(done);
    m_dialogue.ask({"AT+CPMS=?"_ba, m_timings.commandMs, {}}, [this](const AtAnswer &answer) {
        const QList<QByteArray> offered = AnswerParsers::textLists(answer.lines, "+CPMS").value(0);
        for (const QByteArrayView memory : knownMemories)
            if (offered.contains(memory))
                m_memories.append(memory.toByteArray());
        askRoutes();
    });
}

void MailSubscription::askRoutes()
{
    m_dialogue.ask({"AT+CNMI=?"_ba, m_timings.commandMs, {}}, [this](const AtAnswer &answer) {
        // Some devices refuse what they say that they have.
        QList<MailRoutes> candidates = MailRoutes::candidates();
        const MailRoutes best = MailRoutes::bestOf(answer.lines);
        if (best.mode >= 0) {
            candidates.removeAll(best);
            candidates.prepend(best);
        }
        tryRoutes(candidates);
    });
}

void MailSubscription::tryRoutes(QList<MailRoutes> candidates)
{
    if (candidates.isEmpty()) {
        qCInfo(logDevice) << "the device doesn't announce what comes: its memories are looked into";
        finish();
        return;
    }
    const MailRoutes routes = candidates.takeFirst();
    askService(routes, [this, routes, candidates] { askFor(routes, candidates); });
}

/// What is routed to us is lost with a crash unless the service waits for our word
/// (3GPP TS 27.005, 3.2.1). It does so from the first report on, which may follow the routes at
/// once; and a service that was left waiting by an engine before us is not let off.
void MailSubscription::askService(const MailRoutes &routes, const std::function<void()> &then)
{
    const bool routed = routes.routes();
    m_dialogue.ask({routed ? "AT+CSMS=1"_ba : "AT+CSMS=0"_ba, m_timings.commandMs, {}},
                   [this, routed, then](const AtAnswer &answer) {
                       m_isAcknowledged = routed && answer.isOk();
                       then();
                   });
}

void MailSubscription::askFor(const MailRoutes &routes, const QList<MailRoutes> &others)
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
                       if (m_isAcknowledged)
                           m_check.start(m_timings.routesCheckMs);
                       finish();
                   });
}

void MailSubscription::finish()
{
    std::exchange(m_done, nullptr)(m_memories);
}

void MailSubscription::acknowledge(const Then &then)
{
    if (!m_isAcknowledged) {
        then(false);
        return;
    }
    m_dialogue.ask({"AT+CNMA"_ba, m_timings.commandMs, {}}, [this, then](const AtAnswer &answer) {
        // Our word came too late: the device routes nothing any more, and the network sends again
        // what it holds (3GPP TS 27.005, 3.4.1).
        if (answer.isOk())
            then(false);
        else
            restore(then);
    });
}

/// A device that waited for our word in vain announces nothing any more. That may come about after
/// the routes were set: it was an engine before us that owed the word, or the line lost what the
/// device said.
void MailSubscription::check(const Then &then)
{
    m_isCheckDue = false;
    m_check.start(m_timings.routesCheckMs);
    m_dialogue.ask({"AT+CNMI?"_ba, m_timings.commandMs, {}}, [this, then](const AtAnswer &answer) {
        if (answer.isOk() && !m_routes.areIn(answer.lines))
            restore(then);
        else
            then(false);
    });
}

void MailSubscription::restore(const Then &then)
{
    m_dialogue.ask({m_routes.command(), m_timings.commandMs, {}},
                   [then](const AtAnswer &) { then(true); });
}

void MailSubscription::reset()
{
    m_check.stop();
    m_isCheckDue = false;
    m_done = nullptr;
    m_memories.clear();
    m_routes = {};
    m_isAcknowledged = false;
}

} // namespace norvane
