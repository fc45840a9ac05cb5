// The history of many messages, in a file and in a database: how long a page, a search and the
// numbers of a year take, and what filling the search index costs the messages that are sent.
//
//     history_bench [smallest]

#include "BenchSize.h"

#include "TovekSMService/history/HistoryPages.h"
#include "TovekSMService/history/HistorySummary.h"
#include "TovekSMService/history/HistoryThread.h"
#include "TovekSMService/history/InboxPages.h"
#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/history/TextIndex.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"
#include "support/PostgresServer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>
#include <functional>
#include <memory>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

constexpr int pageRows = 100;
constexpr int rowsOfCommit = 1000;

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

/// The machine's time, but that a minute passes with each look at the index.
class HurriedTime : public TimeSource
{
public:
    qint64 nanoseconds() const override { return system().nanoseconds() + m_ahead; }
    std::unique_ptr<Alarm> makeAlarm(std::function<void()> due) override
    {
        return system().makeAlarm(std::move(due));
    }
    void hurry() { m_ahead += qint64{TextIndex::settleMs} * 1'000'000; }

private:
    qint64 m_ahead = 0;
};

template <typename Value>
Value must(const StoreResult<Value> &result)
{
    if (!result)
        qFatal("%s", qPrintable(result.error().text()));
    if constexpr (!std::is_void_v<Value>)
        return *result;
}

const QDateTime &lastMoment()
{
    static const QDateTime moment(QDate(2026, 1, 1), QTime(0, 0), Qt::UTC);
    return moment;
}

QString momentOfRow(int row, int rows)
{
    constexpr qint64 secondsOfYear = 365 * secondsOfDay;
    return lastMoment()
        .addSecs(-secondsOfYear + secondsOfYear * row / rows)
        .toString(u"yyyy-MM-ddTHH:mm:ss"_s);
}

/// The same for each run.
quint32 scattered(int number)
{
    return static_cast<quint32>((static_cast<quint64>(number) * 2'654'435'761U) % 100'000'000U);
}

/// At the end of each 200,000th text.
QString rarePair()
{
    return u"zw"_s;
}

/// What else a text ends with.
QString endOf(int row, int rows)
{
    if (row % 200'000 == 777)
        return u' ' + rarePair();
    return row < rows / 10 ? u" ~old"_s : QString();
}

QVariantList outcomeOf(int row, int rows)
{
    const QString at = momentOfRow(row, rows);
    const int kind = row % 100;
    return {row + 1,
            u"6%1"_s.arg(scattered(row), 8, 10, QChar(u'0')),
            u"Estimado cliente: su pedido %1 está listo para recoger en nuestra tienda de Málaga. "
            "Gracias por su confianza.%2"_s.arg(scattered(row * 7 + 1), 8, 10, QChar(u'0'))
                .arg(endOf(row, rows)),
            kind < 97 ? 1 : -36,
            at,
            kind < 90 ? 2 : 0,
            kind < 90 ? at : QString()};
}

void fill(StoreDatabase &database, int rows)
{
    for (int first = 0; first < rows; first += rowsOfCommit) {
        must(database.together([&] {
            StoreResult<> filled;
            for (int row = first; filled && row < std::min(first + rowsOfCommit, rows); ++row)
                filled = database.write(
                    "INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, "
                    "reported, delivery, delivered_at) VALUES (?, '2025-01-01', ?, ?, ?, ?, 1, ?, "
                    "?)",
                    outcomeOf(row, rows));
            return filled;
        }));
    }
}

void fillInbox(StoreDatabase &database, int rows)
{
    must(database.together([&] {
        StoreResult<> filled;
        for (int row = 0; filled && row < rows; ++row)
            filled = database.write(
                "INSERT INTO received (at, sent_at, phone, text) "
                "VALUES (?, '', ?, ?)",
                {momentOfRow(row, rows), outcomeOf(row, rows).at(1), outcomeOf(row, rows).at(2)});
        return filled;
    }));
}

void index(StoreDatabase &database, HistoryTable table)
{
    HurriedTime time;
    TextIndex index(database, table, time);
    must(index.prepare());
    QElapsedTimer timer;
    timer.start();
    qint64 worst = 0;
    int rows = 0;
    for (int idle = 0; idle < 2;) {
        QElapsedTimer step;
        step.start();
        const int taken = must(index.step(HistoryThread::Pace().rows));
        worst = std::max(worst, step.elapsed());
        rows += taken;
        idle = taken == 0 ? idle + 1 : 0;
        if (taken == 0)
            time.hurry();
    }
    out() << "  index of " << rows
          << (table == HistoryTable::Outcomes ? " outcomes: " : " received: ")
          << static_cast<double>(timer.elapsed()) / 1000 << " s, the longest step " << worst
          << " ms\n";
    out().flush();
}

void writeSizes(const StoreDatabase &database)
{
    if (database.kind() == StoreDatabase::Kind::File)
        return;
    must(database.each("SELECT relname, pg_total_relation_size(oid) FROM pg_class "
                       "WHERE relname IN ('outcome', 'outcome_search', 'outcome_search_pieces')",
                       {}, [](const StoreRow &row) {
                           out() << "  " << row.value(0).toString() << ": "
                                 << row.value(1).toLongLong() / 1'000'000 << " MB\n";
                           return true;
                       }));
}

void measure(const char *name, const std::function<qsizetype()> &query)
{
    QList<double> times;
    qsizetype rows = 0;
    QElapsedTimer all;
    all.start();
    const int rounds = benchSize(100);
    while (times.size() < rounds && (times.size() < 3 || all.elapsed() < 20'000)) {
        QElapsedTimer timer;
        timer.start();
        rows = query();
        times.append(static_cast<double>(timer.nsecsElapsed()) / 1e6);
        if (times.size() == rounds)
            break;
    }
    std::sort(times.begin(), times.end());
    out() << "  " << QString::fromLatin1(name).leftJustified(44)
          << QString::number(times.at(times.size() / 2), 'f', 1).rightJustified(8) << " ms, "
          << QString::number(times.at((times.size() * 99 - 1) / 100), 'f', 1).rightJustified(8)
          << " ms at 99 of 100 (" << rows << " rows)\n";
    out().flush();
}

/// The rows of the first page; -1 for one that was given up.
qsizetype page(StoreDatabase &database, const HistoryFilter &filter,
               const HistoryCursor &after = {})
{
    const QueryLimit limit(TimeSource::system());
    const auto found = HistoryPages(database, limit).page(filter, after, {}, pageRows);
    return found ? found->rows.size() : -1;
}

HistoryFilter filterOf(const QString &text)
{
    HistoryFilter filter;
    filter.text = text;
    return filter;
}

void ask(StoreDatabase &database)
{
    const auto page = [&database](const HistoryFilter &filter) {
        return norvane::page(database, filter);
    };
    const auto search = [&page](const QString &text) { return page(filterOf(text)); };
    HistoryFilter past;
    past.from = u"2025-02-03"_s;
    past.to = u"2025-02-04"_s;
    HistoryFilter failures;
    failures.states = MessageState::Failed;
    measure("first page", [&] { return page({}); });
    measure("a day deep in the past", [&] { return page(past); });
    measure("failures", [&] { return page(failures); });
    measure("nearly all have it: \"6\"", [&] { return search(u"6"_s); });
    measure("all have it: \"malaga\"", [&] { return search(u"malaga"_s); });
    measure("some have it: \"1234\"", [&] { return search(u"1234"_s); });
    measure("few have it: a whole phone",
            [&] { return search(outcomeOf(777, 1).at(1).toString()); });
    measure("none has it: \"xyzzy\"", [&] { return search(u"xyzzy"_s); });
    measure("three characters of a phone", [&] { return search(u"612"_s); });
    measure("two characters", [&] { return search(u"77"_s); });
    measure("two characters that few have", [&] { return search(rarePair()); });
    measure("two characters that none has", [&] { return search(u"qq"_s); });
    measure("two characters that only the oldest have", [&] { return search(u"~o"_s); });
    measure("a character that few have", [&] { return search(rarePair().last(1)); });
    measure("a character that none has", [&] { return search(u"q"_s); });
    measure("a character that only the oldest have", [&] { return search(u"~"_s); });
    measure("numbers of 365 days", [&] {
        const QueryLimit limit(TimeSource::system());
        const auto numbers = HistorySummary(database, limit).of(u"2025-01-01"_s, u"2026-01-01"_s);
        return numbers ? numbers->days.size() : -1;
    });
}

void askInbox(StoreDatabase &database)
{
    const auto search = [&database](const QString &text) {
        const QueryLimit limit(TimeSource::system());
        const auto found =
            InboxPages(database, limit).page({{}, {}, text, false}, {}, {}, pageRows);
        return found ? found->rows.size() : -1; // -1: given up
    };
    measure("received: all have it", [&] { return search(u"malaga"_s); });
    measure("received: few have it", [&] { return search(outcomeOf(777, 1).at(1).toString()); });
    measure("received: none has it", [&] { return search(u"xyzzy"_s); });
    measure("received: two characters that few have", [&] { return search(rarePair()); });
    measure("received: two characters that none has", [&] { return search(u"qq"_s); });
    measure("received: a character that none has", [&] { return search(u"q"_s); });
}

double settledASecond(Store &store, int messages)
{
    must(store.queue().add(QList<QueueRow>(
        messages, {u"2020-01-01T00:00:00"_s, u"600112233"_s, u"Su pedido está listo"_s, 0})));
    QElapsedTimer timer;
    timer.start();
    for (int number = 0; number < messages; ++number) {
        for (;;) {
            const StoreResult<> settled = store.database().together([&] {
                return store.queue().first().and_then([&](const std::optional<StoredMessage>
                                                              &first) {
                    return store.queue().begin({{first->id, std::nullopt, "hash"}}).and_then([&] {
                        return store.queue().finishSent({{first->id, 7, u"2026-01-01T00:00:00"_s}});
                    });
                });
            });
            if (settled)
                break;
            if (settled.error().kind() != StoreFailure::Kind::Busy)
                must(settled);
        }
    }
    return messages * 1000.0 / static_cast<double>(timer.elapsed() + 1);
}

void settle(Store &store, const HistoryStorage &source)
{
    const int messages = benchSize(5000, 20);
    out() << "  settled alone: " << qRound(settledASecond(store, messages)) << " a second\n";
    // Everything is to be indexed anew.
    must(store.database().write(
        "DELETE FROM setting WHERE name IN ('history_index', 'inbox_index')"));
    const HistoryThread thread(source, TimeSource::system(), {});
    out() << "  settled beside the index: " << qRound(settledASecond(store, messages))
          << " a second\n";
    out().flush();
}

/// A queue that is as long as the list of what left it.
void askWithQueue(Store &store, int rows)
{
    for (int first = 0; first < rows; first += rowsOfCommit) {
        QList<QueueRow> batch;
        for (int row = first; row < std::min(first + rowsOfCommit, rows); ++row)
            batch.append({u"2100-01-01T00:00:00"_s, outcomeOf(row, rows).at(1).toString(),
                          outcomeOf(row, rows).at(2).toString(), 0});
        must(store.queue().add(batch));
    }
    out() << "  and " << rows << " that wait:\n";
    const auto search = [&store](const QString &text) {
        return page(store.database(), filterOf(text));
    };
    measure("first page", [&] { return page(store.database(), {}); });
    measure("all have it: \"malaga\"", [&] { return search(u"malaga"_s); });
    measure("few have it: a whole phone",
            [&] { return search(outcomeOf(777, 1).at(1).toString()); });
    measure("none has it: \"xyzzy\"", [&] { return search(u"xyzzy"_s); });
}

/// Everything of a campaign leaves the queue on one day, and its pages are looked at one by one.
void askForDay(StoreDatabase &database, int rows)
{
    constexpr int step = 10 * rowsOfCommit;
    for (int first = 0; first <= 2 * rows; first += step)
        must(database.write("UPDATE outcome SET at = '2026-02-01T12:00:00' "
                            "WHERE id >= ? AND id < ?",
                            {first, first + step}));
    must(database.write(
        "INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, "
        "reported) VALUES (1000000000, '', '600', '', 1, '2026-02-02T00:00:00', 1)"));
    HistoryFilter day;
    day.from = u"2026-02-01"_s;
    day.to = u"2026-02-02"_s;
    const HistoryCursor middle{0, rows / 2};
    out() << "  all of one day:\n";
    measure("its first page", [&] { return page(database, day); });
    measure("a page in its middle", [&] { return page(database, day, middle); });
    measure("a page in the middle of all", [&] { return page(database, {}, middle); });
    HistoryFilter failures = day;
    failures.states = MessageState::InDoubt;
    measure("none in doubt", [&] { return page(database, failures); });
}

void measureStore(Store &store, const HistoryStorage &source, int rows)
{
    fill(store.database(), rows);
    fillInbox(store.database(), benchSize(100'000, 100));
    for (const HistoryTable table : {HistoryTable::Outcomes, HistoryTable::Received})
        index(store.database(), table);
    writeSizes(store.database());
    ask(store.database());
    askInbox(store.database());
    settle(store, source);
    askWithQueue(store, rows);
    askForDay(store.database(), rows);
}

void measureFile(int rows)
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"queue.sqlite"_s);
    out() << "In a file, " << rows << " outcomes:\n";
    Store store(file);
    must(store.open());
    measureStore(store, {file}, rows);
    out() << "  the file has " << QFileInfo(file).size() / 1'000'000 << " MB\n";
}

void measureServer(int rows)
{
    const QTemporaryDir folder;
    const SystemClock clock;
    PostgresServer server(PostgresServer::Durability::Flushed);
    if (!server.start())
        qFatal("no server");
    const QString conninfo = server.freshDatabase(u"bench"_s);
    const SharedStore shared = {conninfo,
                                {u"bench"_s, u"bench"_s, u"bench"_s},
                                0,
                                [&clock](qint64 seconds) { return clock.wallClockText(seconds); }};
    Store store(folder.filePath(u"queue.sqlite"_s), shared, clock.time());
    must(store.open());
    must(store.sharedDatabase()->open());
    must(store.queue().load());
    out() << "In a database, " << rows << " outcomes:\n";
    measureStore(store, {{}, conninfo}, rows);
}

} // namespace

} // namespace norvane

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const int rows = norvane::benchSize(1'000'000, 2000);
    norvane::measureFile(rows);
    norvane::measureServer(rows);
    return 0;
}
