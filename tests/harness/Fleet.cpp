#include "harness/Fleet.h"

#include "contract/BusTypes.h"

#include <QCoreApplication>
#include <QJsonObject>

#include <algorithm>
#include <stdexcept>

namespace norvane {

namespace {

constexpr auto databaseName = "queue"_L1;
constexpr int sentCode = 1;
constexpr int phonesOfLane = 1'000'000;
constexpr int tellLimit = 20'000; // ms, until an engine has told and corrected what it knows

} // namespace

Fleet::Fleet(const RunOptions &options)
    : m_options(options), m_random(options.seed + static_cast<quint32>(options.lane))
{
    server.freshDatabase(databaseName);
    // Some devices refuse some parts: for the message's sake, or for a while.
    using Console = SharingEngine::Console;
    const auto make = [&](const QString &name, Console console, const QStringList &options = {}) {
        return std::make_unique<SharingEngine>(name, server.socketPath(), console, options);
    };
    const QStringList refusesSome = {u"--fail-every"_s, u"9"_s, u"--fail-code"_s, u"1"_s};
    m_engines = {make(u"one"_s, Console::Open, refusesSome),
                 make(u"two"_s, Console::None, refusesSome), make(u"three"_s, Console::Open),
                 make(u"four"_s, Console::None, {u"--fail-every"_s, u"7"_s})};
}

bool Fleet::begin()
{
    for (const auto &engine : m_engines) {
        if (!engine->begin(PostgresServer::login(databaseName))) {
            stuck(u"the first start of engine "_s + engine->name());
            return false;
        }
    }
    return true;
}

int Fleet::random(int least, int max)
{
    return std::uniform_int_distribution(least, max)(m_random);
}

/// @return nothing while the server is away
std::optional<PostgresServer::Rows> Fleet::ask(const QString &statements)
{
    if (m_client && m_client->isConnected()) {
        try {
            return m_client->query(statements);
        } catch (const std::runtime_error &) { // the server was killed since
        }
    }
    m_client = std::make_unique<PostgresClient>(server.connection(databaseName));
    if (!m_client->isConnected())
        return std::nullopt;
    return m_client->query(statements);
}

/// @return -1 while the server is away
int Fleet::number(const QString &query)
{
    const auto rows = ask(query);
    return rows && !rows->isEmpty() ? rows->constFirst().constFirst().toInt() : -1;
}

void Fleet::stuck(const QString &what)
{
    m_problems.fault(&Tally::stuck, u"did not come: "_s + what + u" ("_s + m_deeds + u')');
}

void Fleet::beginCycle(int cycle)
{
    m_deeds = u"cycle %1:"_s.arg(cycle);
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
    const QString query =
        u"SELECT count(*) = 0 OR coalesce(bool_or(message.state = 1 AND name = '%1'), "
        "false) FROM message LEFT JOIN engine ON engine.id = message.engine"_s.arg(
            engine(index).name());
    eventually(
        [&] {
            const auto rows = ask(query);
            return !rows || rows->constFirst().constFirst() == "t"_L1;
        },
        drainLimit);
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
    const bool isTaken =
        eventually([&] { return ask(silence) && ask(end) && number(held) == 0; }, drainLimit);
    if (!isTaken)
        stuck(u"the takeover of engine "_s + name);
}

void Fleet::kill(int index)
{
    engine(index).thaw();
    engine(index).sandbox.kill();
}

/// What an engine that was killed was about to learn of its messages, it doesn't know. What it had
/// written down at home it knows.
void Fleet::excuse(int index)
{
    const auto kept = StoreReader(engine(index).sandbox.storeFile()).kept();
    const auto rows =
        ask(u"SELECT phone, message.id FROM message JOIN engine ON engine.id = message.engine "
            "WHERE name = '%1' AND message.state = 1 UNION ALL "
            "SELECT phone, message_id FROM outcome JOIN engine ON engine.id = outcome.engine "
            "WHERE name = '%1' AND code = -39"_s.arg(engine(index).name()));
    if (!kept || !rows)
        stuck(u"a look at what a killed engine left"_s);
    for (const QStringList &row : rows.value_or(PostgresServer::Rows())) {
        if (!kept || !kept->sent.contains(row.at(1).toLongLong()))
            m_excused.insert(row.at(0));
    }
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
        excuse(index);
        if (!engine(index).start())
            stuck(u"the start of engine "_s + engine(index).name());
    }
}

void Fleet::takeAnswers()
{
    for (const Call &call : std::exchange(m_calls, {})) {
        if (!eventually([&] { return call.answer.isFinished(); }, drainLimit))
            stuck(u"the answer to a call"_s);
        // A call that fails because the database went away may have been carried out.
        const bool isAnswered = howQueued(call.answer.reply()) == Queued::Answered;
        for (qsizetype at = call.first; isAnswered && at < call.first + call.count; ++at)
            m_account.queued[at].how = Queued::Answered;
    }
}

bool Fleet::isQuiet()
{
    if (number(u"SELECT count(*) FROM message"_s) != 0)
        return false;
    return std::all_of(m_engines.cbegin(), m_engines.cend(), [](const auto &engine) {
        const auto kept = StoreReader(engine->sandbox.storeFile()).kept();
        return kept && kept->count == 0;
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
QSet<QString> Fleet::knownInDoubt()
{
    QSet<QString> phones;
    for (const QStringList &row :
         ask(u"SELECT phone FROM outcome WHERE code = -39"_s).value_or(PostgresServer::Rows())) {
        if (!m_excused.contains(row.constFirst()) && !m_known.contains(row.constFirst()))
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
    if (!eventually([this] { return isQuiet(); }, drainLimit))
        stuck(u"the end of the queue"_s);
    if (!eventually([this] { return knownInDoubt().isEmpty(); }, tellLimit))
        m_known += knownInDoubt();
    const QString untold = u"SELECT count(*) FROM outcome JOIN engine ON engine.id = reporter "
                           "WHERE reported = 0 AND name IN ('one', 'three')"_s;
    if (!eventually([&] { return number(untold) == 0; }, tellLimit)) {
        m_problems.fault(&Tally::untold,
                         u"a failure is not told to a console that is open ("_s + m_deeds + u')');
        // Once, and not in each of the cycles that follow.
        ask(u"UPDATE outcome SET reported = 2 WHERE reported = 0 AND reporter IN "
            "(SELECT id FROM engine WHERE name IN ('one', 'three'))"_s);
    }
}

/// Consoles come as early as they can: the engines have no database yet.
void Fleet::restartWithConsoles()
{
    for (int index = 0; index < size; ++index) {
        kill(index);
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
        if (!eventually([&] { return number(untold) == 0; }, tellLimit))
            stuck(u"a failure to the last console"_s);
        // The engine's own count, behind every word of the others.
        if (!eventually([&] { return engine->sandbox.queueSize() == 0; }, tellLimit))
            stuck(u"engine %1 counts %2 messages in an empty queue"_s.arg(
                engine->name(), QString::number(engine->sandbox.queueSize())));
        QCoreApplication::processEvents();
        for (const QString &phone : console.sent()) {
            if (number(u"SELECT count(*) FROM outcome WHERE phone = '%1' AND code = 1"_s.arg(
                    phone)) == 0)
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
    const auto waiting = ask(u"SELECT phone, state, parts_sent FROM message"_s);
    const auto outcomes = ask(u"SELECT phone, code, code = 1 AND reporter <> engine AND "
                              "reporter IS NOT NULL FROM outcome ORDER BY id"_s);
    if (!waiting || !outcomes) {
        stuck(u"the database"_s);
        return;
    }
    for (const QStringList &row : *waiting)
        m_account.waiting.append({row.at(0), row.at(1).toInt(), row.at(2).toInt()});
    for (const QStringList &row : *outcomes) {
        const QString &phone = row.at(0);
        const bool isKnown = m_known.contains(phone) || !m_excused.contains(phone);
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
        if (!engine->sandbox.stop())
            stuck(u"the own end of engine "_s + engine->name());
    }
    account();
    accountTold();
    Tally tally = count(m_account);
    tally.faults += m_problems.faults;
    tally.stuck += m_problems.stuck;
    tally.untold += m_problems.untold;
    tally.untrue += m_problems.untrue;
    tally.corrected = m_problems.corrected;
    tally.cycles = cycles;
    explain(tally);
    return tally;
}

} // namespace norvane
