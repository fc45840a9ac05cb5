#include "TovekSMService/store/StoreSchema.h"

#include "TovekSMService/store/Sql.h"

#include <array>
#include <span>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

// delivery_date is the date as it was given; due is the same date where it is one, and empty, which
// is before every date, where it isn't. state: 0 waiting, 1 a part is leaving,
// 2 in progress between two parts.
constexpr const char *version1[] = {
    "CREATE TABLE message ("
    " id INTEGER PRIMARY KEY AUTOINCREMENT,"
    " delivery_date TEXT NOT NULL,"
    " due TEXT NOT NULL,"
    " phone TEXT NOT NULL,"
    " text TEXT NOT NULL,"
    " state INTEGER NOT NULL DEFAULT 0,"
    " attempts INTEGER NOT NULL DEFAULT 0,"
    " reference INTEGER,"
    " parts_sent INTEGER NOT NULL DEFAULT 0,"
    " part_hash BLOB)",
    "CREATE INDEX message_by_due ON message (due, id)",
    "CREATE INDEX message_in_progress ON message (state) WHERE state <> 0",

    "CREATE TABLE setting (name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID",

    // pin is a digest: enough to know it again, and no second place to read it from.
    "CREATE TABLE pin_attempt ("
    " sim TEXT NOT NULL, pin BLOB NOT NULL, history INTEGER NOT NULL, at TEXT NOT NULL,"
    " PRIMARY KEY (sim, pin)) WITHOUT ROWID",

    // code: 1 sent, else the error code. reported: whether a console has heard of it.
    "CREATE TABLE outcome ("
    " id INTEGER PRIMARY KEY AUTOINCREMENT,"
    " message_id INTEGER NOT NULL,"
    " delivery_date TEXT NOT NULL,"
    " phone TEXT NOT NULL,"
    " text TEXT NOT NULL,"
    " code INTEGER NOT NULL,"
    " network_reference INTEGER,"
    " at TEXT NOT NULL,"
    " reported INTEGER NOT NULL)",
    "CREATE INDEX outcome_unreported ON outcome (id) WHERE reported = 0",
    "CREATE INDEX outcome_by_message ON outcome (message_id)",
};

// original_date is the date as it was given; a retry moves delivery_date and due, and leaves it.
constexpr const char *version2[] = {
    "ALTER TABLE message ADD COLUMN original_date TEXT NOT NULL DEFAULT ''",
    "UPDATE message SET original_date = delivery_date",

    // period: a day or a minute, the beginning of a date.
    "CREATE TABLE part_count ("
    " period TEXT PRIMARY KEY, parts INTEGER NOT NULL) WITHOUT ROWID",

    "CREATE INDEX outcome_by_time ON outcome (at) WHERE reported = 1",
};

// delivery and state are values of DeliveryState. final: no further report is expected.
constexpr const char *version3[] = {
    "ALTER TABLE outcome ADD COLUMN delivery INTEGER NOT NULL DEFAULT 0",
    "ALTER TABLE outcome ADD COLUMN delivered_at TEXT NOT NULL DEFAULT ''",
    "CREATE INDEX outcome_by_delivery ON outcome (delivery) WHERE delivery > 1",

    "CREATE TABLE sent_part ("
    " id INTEGER PRIMARY KEY AUTOINCREMENT,"
    " message_id INTEGER NOT NULL,"
    " number INTEGER NOT NULL,"
    " total INTEGER NOT NULL,"
    " reference INTEGER,"
    " phone TEXT NOT NULL,"
    " sim TEXT NOT NULL,"
    " at TEXT NOT NULL,"
    " state INTEGER NOT NULL,"
    " final INTEGER NOT NULL DEFAULT 0,"
    " status INTEGER,"
    " reported_at TEXT NOT NULL DEFAULT '')",
    "CREATE INDEX sent_part_open ON sent_part (reference, sim) WHERE final = 0",
    "CREATE INDEX sent_part_by_message ON sent_part (message_id)",
    "CREATE INDEX sent_part_pending ON sent_part (at) WHERE state = 1",
    "CREATE INDEX sent_part_by_time ON sent_part (at)",

    // pdu: of a report that belongs to no part.
    "CREATE TABLE status_report ("
    " digest BLOB PRIMARY KEY, at TEXT NOT NULL, part_id INTEGER, pdu TEXT) WITHOUT ROWID",
    "CREATE INDEX status_report_by_time ON status_report (at)",

    "CREATE TABLE received ("
    " id INTEGER PRIMARY KEY AUTOINCREMENT,"
    " at TEXT NOT NULL,"
    " sent_at TEXT NOT NULL,"
    " phone TEXT NOT NULL,"
    " text TEXT NOT NULL,"
    " read INTEGER NOT NULL DEFAULT 0)",
    "CREATE INDEX received_by_time ON received (at)",
    "CREATE INDEX received_unread ON received (id) WHERE read = 0",

    // message_id: the message that the part was shown with, which has its text. text: UTF-16.
    "CREATE TABLE received_part ("
    " id INTEGER PRIMARY KEY AUTOINCREMENT,"
    " digest BLOB NOT NULL UNIQUE,"
    " at TEXT NOT NULL,"
    " sim TEXT NOT NULL,"
    " phone TEXT NOT NULL,"
    " reference INTEGER NOT NULL,"
    " wide INTEGER NOT NULL,"
    " total INTEGER NOT NULL,"
    " number INTEGER NOT NULL,"
    " sent_at TEXT NOT NULL,"
    " text BLOB NOT NULL,"
    " message_id INTEGER)",
    "CREATE INDEX received_part_by_message ON received_part (message_id)",
    "CREATE INDEX received_part_waiting ON received_part (phone, reference) "
    "WHERE message_id IS NULL",

    // phone: as it was given. How numbers are compared is a setting, which may change.
    "CREATE TABLE opt_out ("
    " id INTEGER PRIMARY KEY AUTOINCREMENT, phone TEXT NOT NULL UNIQUE, at TEXT NOT NULL)",
};

// contents: a Settlement, as KeptSettlements writes it.
constexpr const char *version4[] = {
    "CREATE TABLE kept_settlement (id INTEGER PRIMARY KEY, contents BLOB NOT NULL)",

    // Messages on their way into a database that is shared, and the moves out of one that are done.
    "CREATE TABLE outgoing ("
    " id INTEGER PRIMARY KEY, delivery_date TEXT NOT NULL, original_date TEXT NOT NULL,"
    " due TEXT NOT NULL, phone TEXT NOT NULL, text TEXT NOT NULL, state INTEGER NOT NULL,"
    " attempts INTEGER NOT NULL, reference INTEGER, parts_sent INTEGER NOT NULL)",
    "CREATE TABLE done_move (token TEXT PRIMARY KEY) WITHOUT ROWID",
};

// queued_at: empty for a message from before. outcome_forgotten: what the search index still has.
constexpr const char *version5[] = {
    "ALTER TABLE message ADD COLUMN queued_at TEXT NOT NULL DEFAULT ''",
    "ALTER TABLE outcome ADD COLUMN queued_at TEXT NOT NULL DEFAULT ''",
    "DROP INDEX outcome_by_time",
    "CREATE INDEX outcome_by_time ON outcome (at, reported)",
    "CREATE INDEX outcome_unsuccessful ON outcome (id) WHERE code <> 1 OR delivery = 3",

    "CREATE TABLE attempt ("
    " message_id INTEGER NOT NULL, at TEXT NOT NULL, part INTEGER NOT NULL, code INTEGER NOT NULL,"
    " PRIMARY KEY (message_id, at, part)) WITHOUT ROWID",
    "CREATE INDEX attempt_by_time ON attempt (at)",

    "CREATE TABLE outcome_forgotten ("
    " id INTEGER PRIMARY KEY, phone TEXT NOT NULL, text TEXT NOT NULL)",

    "ALTER TABLE outgoing ADD COLUMN queued_at TEXT NOT NULL DEFAULT ''",
    "ALTER TABLE outgoing ADD COLUMN failures TEXT NOT NULL DEFAULT ''",
};

// The search index is made anew, a few rows at a time: it holds one or two characters at the end of
// a text as well.
constexpr const char *version6[] = {
    "CREATE TABLE received_forgotten ("
    " id INTEGER PRIMARY KEY, phone TEXT NOT NULL, text TEXT NOT NULL)",
    "DELETE FROM setting WHERE name = 'history_index'",
    "DROP TABLE IF EXISTS outcome_search",
};

constexpr std::array<std::span<const char *const>, StoreSchema::latestVersion> migrations = {
    version1, version2, version3, version4, version5, version6};

StoreResult<int> versionOf(const QSqlDatabase &database)
{
    return prepared(database, u"PRAGMA user_version"_s).and_then([](QSqlQuery query) {
        return execute(query).map([&] { return query.next() ? query.value(0).toInt() : 0; });
    });
}

/// Brings a database of this version to the next one.
StoreResult<> migrateFrom(const QSqlDatabase &database, int version)
{
    return inTransaction(database, [&] {
        StoreResult<> done;
        for (const char *const statement : migrations.at(static_cast<size_t>(version))) {
            done = execute(database, QString::fromLatin1(statement));
            if (!done)
                return done;
        }
        return execute(database, u"PRAGMA user_version = %1"_s.arg(version + 1));
    });
}

} // namespace

StoreResult<> StoreSchema::refuseLater(const QSqlDatabase &database)
{
    return versionOf(database).and_then([](int found) -> StoreResult<> {
        if (found <= latestVersion)
            return {};
        return failed(StoreFailure(StoreFailure::Kind::TooNew,
                                   u"the store has the schema version %1, and this program "
                                   "knows versions up to %2"_s.arg(found)
                                       .arg(latestVersion)));
    });
}

StoreResult<> StoreSchema::refuseOther(const QSqlDatabase &database)
{
    if (StoreResult<> isKnown = refuseLater(database); !isKnown)
        return isKnown;
    return versionOf(database).and_then([](int found) -> StoreResult<> {
        if (found == latestVersion)
            return {};
        return failed(StoreFailure(StoreFailure::Kind::Other,
                                   u"the store still has the schema version %1"_s.arg(found)));
    });
}

StoreResult<> StoreSchema::migrate(const QSqlDatabase &database)
{
    return versionOf(database).and_then([&](int version) {
        StoreResult<> done;
        for (; done && version < latestVersion; ++version)
            done = migrateFrom(database, version);
        return done;
    });
}

} // namespace norvane
