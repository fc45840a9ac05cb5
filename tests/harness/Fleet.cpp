#include "harness/Fleet.h"

#include "contract/BusTypes.h"

#include <QCoreApplication>
#include <QJsonObject>
#include <QThread>

#include <algorithm>

namespace norvane {

namespace {

constexpr int sentCode = 1;
constexpr int phonesOfLane = 1'000'000;
constexpr int tellLimit = 20'000;  // ms, until an engine has told and corrected what it knows
constexpr int hangLimit = 120'000; // ms; what only a hang takes
constexpr int shortLimit = 3000;   // ms, where something else is known to hang

} // namespace

Fleet::Fleet(const RunOptions &options)
    : m_options(options), m_random(options.seed + static_cast<quint32>(options.lane))
{
    // Some devices refuse some parts: for the message's sake, or for a while.
    using Console = SharingEngine::Console;
    const auto make = [&](const QString &name, Console console, const QStringList &device = {}) {
        return std::make_unique<SharingEngine>(name, server.socketPath(), console, device);
    };
    const QStringList refusesSome = {u"--fail-every"_s, u"9"_s, u"--fail-code"_s, u"1"_s};
    m_engines = {make(u"one"_s, Console::Open, refusesSome),
                 make(u"two"_s, Console::None, refusesSome), make(u"three"_s, Console::Open),
                 make(u"four"_s, Console::None, {u"--fail-every"_s, u"7"_s})};
}

bool Fleet::begin()
{
    for (const auto &engine : m_engines) {
        if (!engine->begin(QueueDatabase::login())) {
            stuck(u"the first start of engine "_s + engine->name());
            return false;
        }
    }
    return await(u"the tables"_s, [this] { return m_database.watchEpochs(); });
}

int Fleet::random(int least, int max)
{
    return std::uniform_int_distribution(least, max)(m_random);
}

void Fleet::stuck(const QString &what)
{
    m_problems.fault(&Tally::stuck, u"did not come: "_s + what + u" ("_s + m_deeds + u')');
}

int Fleet::limit() const
{
    return isStuck() ? shortLimit : hangLimit;
}

bool Fleet::await(const QString &what, const std::function<bool()> &condition)
{
    if (eventually(condition, limit()))
        return true;
    stuck(what);
    return false;
}

void Fleet::beginCycle(int cycle)
{
    m_deeds = u"cycle %1:"_s.arg(cycle);
    m_doubts.beginCycle();
}

void Fleet::queue(int index, const QList<Shape> &shapes)
{
    constexpr int firstPhone = 600'000'000;
    constexpr int aMinuteAgo = -60;
    BusSMSList list;
    for (const Shape shape : shapes) {
        const int number = m_options.lane * phonesOfLane + m_made++;
        list.append({QString::number(firstPhone + number), textOf(shape, number)});
    }
    const bool isSingle = list.size() == 1 && random(0, 1) == 0;
    const QVariantList arguments =
        isSingle ? QVariantList{list.constFirst().phone, list.constFirst().message}
                 : QVariantList{QVariant::fromValue(list)};
    m_calls.append({engine(index).sandbox.send(isSingle ? "AddSMS" : "AddSMSList",
                                               arguments + QVariantList{engineMoment(aMinuteAgo)}),
                    m_account.queued.size(), list.size()});
    for (const auto &entry : list)
        m_account.queued.append({entry.phone, entry.message, Queued::Unanswered});
}

void Fleet::waitForPart(int index)
{
    SharingEngine &victim = engine(index);
    const QString query =
        u"SELECT NOT EXISTS (SELECT 1 FROM message WHERE state <> 1 AND (engine IS NULL OR engine "
        "= me.id)) OR EXISTS (SELECT 1 FROM message WHERE state = 1 AND engine = me.id) "
        "FROM engine me WHERE name = '%1'"_s.arg(victim.name());
    await(u"a part of engine "_s + victim.name(), [&] {
        const auto rows = m_database.ask(query);
        return !rows || rows->isEmpty() || rows->constFirst().constFirst() == "t"_L1 ||
               victim.isHeldByTrap();
    });
}

void Fleet::holdBeginning(int index)
{
    constexpr int beginLimit = 2000; // ms; the others may have been quicker
    SharingEngine &victim = engine(index);
    // A connection prepares the statement when it begins its first part.
    victim.setTrap({.containing = "SET state = 1, engine",
                    .moment = PostgresTrap::Moment::BeforeMessage,
                    .act = PostgresTrap::Act::HoldClient});
    victim.proxy.cut();
    queue((index + 1) % size, QList<Shape>(12, Shape::TwoParts));
    if (!eventually([&] { return victim.proxy.hasTrapActed(); }, beginLimit))
        return;
    note(u"[held]"_s);
    const QString epoch = u"SELECT epoch FROM engine WHERE name = '%1'"_s.arg(victim.name());
    const int before = m_database.number(epoch);
    await(u"another connection of engine "_s + victim.name(),
          [&] { return m_database.number(epoch) > before; });
    victim.proxy.clearTrap();
}

void Fleet::killTwice(int index)
{
    constexpr int keepLimit = 1000; // ms; there may be nothing to be kept
    constexpr int longestLife = 900;
    SharingEngine &victim = engine(index);
    victim.proxy.clearTrap();
    queue((index + 1) % size, QList<Shape>(12, Shape::TwoParts));
    const QString leaving =
        u"SELECT count(*) FROM message JOIN engine ON engine.id = message.engine WHERE "
        "message.state = 1 AND name = '%1'"_s.arg(victim.name());
    eventually([&] { return m_database.number(leaving) > 0; }, keepLimit);
    victim.cutOff();
    if (victim.sandbox.isUp() &&
        eventually([&] { return m_doubts.noteKept(victim) > 0; }, keepLimit))
        note(u"[kept]"_s);
    kill(index);
    if (!victim.start())
        stuck(u"the start of engine %1 by itself"_s.arg(victim.name()));
    QThread::msleep(static_cast<unsigned long>(random(0, longestLife)));
    kill(index);
}

void Fleet::waitForTakeover(int index)
{
    const QString &name = engine(index).name();
    const QString silence =
        u"UPDATE engine SET seen = clock_timestamp() - interval '31 s' WHERE id IN (SELECT id FROM "
        "engine WHERE name = '%1' AND seen > clock_timestamp() - interval '31 s' "
        "FOR NO KEY UPDATE SKIP LOCKED)"_s.arg(name);
    // A session that is cut off in the middle of a statement keeps its locks until the server finds
    // out that nobody is there, which it does by the signs of life of TCP, and not on a socket.
    const QString end = u"SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE state = "
                        "'active' AND wait_event = 'ClientRead' AND "
                        "state_change < clock_timestamp() - interval '10 s'"_s;
    const QString held = u"SELECT count(*) FROM message JOIN engine ON engine.id = message.engine "
                         "WHERE message.state = 1 AND name = '%1'"_s.arg(name);
    m_doubts.noteSilent(engine(index));
    await(u"the takeover of engine "_s + name, [&] {
        return m_database.ask(silence) && m_database.ask(end) && m_database.number(held) == 0;
    });
}

void Fleet::kill(int index)
{
    engine(index).thaw();
    engine(index).sandbox.kill();
}

void Fleet::letGo(int except)
{
    if (!server.start())
        stuck(u"the server"_s);
    for (int index = 0; index < size; ++index) {
        if (index == except)
            continue;
        PostgresProxy &proxy = engine(index).proxy;
        proxy.clearTrap();
        proxy.setRefusing(false);
        proxy.setDelay(std::chrono::microseconds(0));
        proxy.release();
        engine(index).thaw();
        if (engine(index).sandbox.isUp())
            continue;
        if (!m_doubts.noteKilled(engine(index)))
            stuck(u"a look at what a killed engine left"_s);
        if (!engine(index).start())
            stuck(u"the start of engine "_s + engine(index).name());
    }
}

void Fleet::takeAnswers()
{
    for (const Call &call : std::exchange(m_calls, {})) {
        await(u"the answer to a call"_s, [&] { return call.answer.isFinished(); });
        // A call that fails because the database went away may have been carried out.
        const bool isAnswered = howQueued(call.answer.reply()) == Queued::Answered;
        for (qsizetype at = call.first; isAnswered && at < call.first + call.count; ++at)
            m_account.queued[at].how = Queued::Answered;
    }
}

bool Fleet::isQuiet()
{
    if (m_database.number(u"SELECT count(*) FROM message"_s) != 0)
        return false;
    return std::all_of(m_engines.cbegin(), m_engines.cend(), [](const auto &engine) {
        const auto kept = StoreReader(engine->sandbox.storeFile()).kept();
        return kept && kept->isEmpty();
    });
}

QHash<QString, QSet<int>> Fleet::receivedParts() const
{
    QHash<QString, QSet<int>> parts;
    for (const auto &engine : m_engines) {
        for (const QJsonObject &entry : engine->device().messages()) {
            QSet<int> &missing = parts[entry.value(u"number").toString()];
            if (missing.isEmpty()) {
                for (int part = 0; part <= entry.value(u"parts").toInt(1); ++part)
                    missing.insert(part); // 0 stands for one that was received
            }
            missing.remove(entry.value(u"part").toInt(1));
        }
    }
    return parts;
}

/// Messages that the devices took whole, and that are in doubt although their engines live on.
std::optional<QSet<QString>> Fleet::knownInDoubt()
{
    QSet<QString> phones;
    const auto doubts = m_database.ask(u"SELECT phone FROM outcome WHERE code = -39"_s);
    if (!doubts)
        return std::nullopt;
    for (const QStringList &row : *doubts) {
        if (!m_doubts.isExcused(row.constFirst()) && !m_known.contains(row.constFirst()))
            phones.insert(row.constFirst());
    }
    if (phones.isEmpty())
        return phones;
    const QHash<QString, QSet<int>> missing = receivedParts();
    phones.removeIf([&](const QString &phone) { return missing.value(phone) != QSet<int>{0}; });
    return phones;
}

void Fleet::recover()
{
    letGo();
    takeAnswers();
    for (const QueuedMessage &message : m_account.queued) {
        if (!m_deedsOf.contains(message.phone))
            m_deedsOf.insert(message.phone, m_deeds);
    }
    if (!eventually([this] { return isQuiet(); }, limit()))
        stuck(u"the end of the queue, left: "_s + m_database.remains());
    m_doubts.judge();
    const auto isNoneInDoubt = [this] {
        const auto phones = knownInDoubt();
        return phones && phones->isEmpty();
    };
    if (!eventually(isNoneInDoubt, tellLimit)) {
        const auto phones = knownInDoubt();
        if (!phones)
            stuck(u"the messages in doubt"_s);
        m_known += phones.value_or(QSet<QString>());
    }
    const QString untold = u"SELECT count(*) FROM outcome JOIN engine ON engine.id = reporter "
                           "WHERE reported = 0 AND name IN ('one', 'three')"_s;
    if (!eventually([&] { return m_database.number(untold) == 0; }, tellLimit)) {
        m_problems.fault(&Tally::untold,
                         u"a failure is not told to a console that is open ("_s + m_deeds + u')');
        // Once, and not in each of the cycles that follow.
        m_database.ask(u"UPDATE outcome SET reported = 2 WHERE reported = 0 AND reporter IN "
                       "(SELECT id FROM engine WHERE name IN ('one', 'three'))"_s);
    }
}

/// Consoles come as early as they can: the engines have no database yet.
void Fleet::restartWithConsoles()
{
    for (int index = 0; index < size; ++index) {
        kill(index);
        if (!m_doubts.noteKilled(engine(index)))
            stuck(u"a look at what a killed engine left"_s);
        engine(index).proxy.setRefusing(true);
        if (!engine(index).start())
            stuck(u"the last start of engine "_s + engine(index).name());
        engine(index).console();
        engine(index).sandbox.queueSize(); // answered behind what the console asked
        engine(index).proxy.setRefusing(false);
    }
}

void Fleet::hearRest()
{
    for (const auto &engine : m_engines) {
        const EngineConsole &console = engine->console();
        const QString untold = u"SELECT count(*) FROM outcome JOIN engine ON engine.id = reporter "
                               "WHERE reported = 0 AND name = '%1'"_s.arg(engine->name());
        if (!eventually([&] { return m_database.number(untold) == 0; }, tellLimit))
            stuck(u"a failure to the last console"_s);
        // The engine's own count, behind every word of the others.
        const int left = m_database.number(u"SELECT count(*) FROM message"_s);
        if (!eventually([&] { return engine->sandbox.queueSize() == left; }, tellLimit))
            stuck(u"engine %1 counts %2 messages in a queue of %3"_s.arg(
                engine->name(), QString::number(engine->sandbox.queueSize()),
                QString::number(left)));
        QCoreApplication::processEvents();
        for (const QString &phone : console.sent()) {
            if (m_database.number(
                    u"SELECT count(*) FROM outcome WHERE phone = '%1' AND code = 1"_s.arg(phone)) ==
                0)
                m_problems.fault(&Tally::untrue, phone + u" is told as sent and is not"_s);
        }
    }
}

void Fleet::account()
{
    for (const auto &engine : m_engines) {
        for (const QJsonObject &entry : engine->device().messages())
            m_account.received.append(
                {entry.value(u"number").toString(), entry.value(u"text").toString(),
                 entry.value(u"part").toInt(1), entry.value(u"parts").toInt(1)});
    }
    const auto waiting = m_database.ask(u"SELECT phone, state, parts_sent FROM message"_s);
    const auto outcomes = m_database.ask(u"SELECT phone, code, code = 1 AND reporter <> engine AND "
                                         "reporter IS NOT NULL FROM outcome ORDER BY id"_s);
    if (!waiting || !outcomes) {
        stuck(u"the database"_s);
        return;
    }
    for (const QStringList &row : *waiting)
        m_account.waiting.append({row.at(0), row.at(1).toInt(), row.at(2).toInt()});
    for (const QStringList &row : *outcomes) {
        const QString &phone = row.at(0);
        const bool isKnown = m_known.contains(phone) || !m_doubts.isExcused(phone);
        m_account.outcomes.append({phone, row.at(1).toInt(), false, isKnown});
        m_problems.corrected += row.at(2) == "t"_L1 ? 1 : 0;
    }
}

/// An engine that is killed may tell a failure once more, and what was in doubt may be told as sent
/// later on.
void Fleet::accountTold()
{
    QHash<QString, int> codes;
    for (const MessageOutcome &outcome : m_account.outcomes)
        codes.insert(outcome.phone, outcome.code);
    QSet<QString> told;
    for (const auto &engine : m_engines) {
        for (const MessageOutcome &failure : engine->console().failures()) {
            if (codes.value(failure.phone) != sentCode && !told.contains(failure.phone))
                m_account.told.append(failure);
            told.insert(failure.phone);
        }
    }
}

void Fleet::explain(Tally &tally) const
{
    for (QString &fault : tally.faults) {
        const QString deeds = m_deedsOf.value(fault.section(u' ', 0, 0));
        if (!deeds.isEmpty())
            fault += u" ("_s + deeds + u')';
    }
}

Tally Fleet::close(int cycles)
{
    m_deeds = u"end"_s;
    recover();
    restartWithConsoles();
    hearRest();
    for (const auto &engine : m_engines) {
        if (!engine->sandbox.stop(hangLimit))
            stuck(u"the own end of engine "_s + engine->name());
    }
    account();
    accountTold();
    const auto begunLate = m_database.begunLate();
    if (!begunLate)
        stuck(u"what began too late"_s);
    for (const QString &phone : begunLate.value_or(QStringList()))
        m_problems.fault(&Tally::unfenced, phone + u" began in an epoch that was over"_s);
    Tally tally = count(m_account);
    tally.faults += m_problems.faults;
    tally.stuck += m_problems.stuck;
    tally.untold += m_problems.untold;
    tally.untrue += m_problems.untrue;
    tally.unfenced += m_problems.unfenced;
    tally.corrected = m_problems.corrected;
    tally.cycles = cycles;
    explain(tally);
    return tally;
}

} // namespace norvane
