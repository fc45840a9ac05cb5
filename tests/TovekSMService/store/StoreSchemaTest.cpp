#include "TovekSMService/store/StoreFixture.h"

#include "TovekSMService/store/StoreSchema.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The tables as the first version of the engine made them.
const char *const version1[] = {
    "CREATE TABLE message (id INTEGER PRIMARY KEY AUTOINCREMENT, delivery_date TEXT NOT NULL,"
    " due TEXT NOT NULL, phone TEXT NOT NULL, text TEXT NOT NULL,"
    " state INTEGER NOT NULL DEFAULT 0, attempts INTEGER NOT NULL DEFAULT 0, reference INTEGER,"
    " parts_sent INTEGER NOT NULL DEFAULT 0, part_hash BLOB)",
    "CREATE INDEX message_by_due ON message (due, id)",
    "CREATE INDEX message_in_progress ON message (state) WHERE state <> 0",
    "CREATE TABLE setting (name TEXT PRIMARY KEY, value TEXT NOT NULL) WITHOUT ROWID",
    "CREATE TABLE pin_attempt (sim TEXT NOT NULL, pin BLOB NOT NULL, history INTEGER NOT NULL,"
    " at TEXT NOT NULL, PRIMARY KEY (sim, pin)) WITHOUT ROWID",
    "CREATE TABLE outcome (id INTEGER PRIMARY KEY AUTOINCREMENT, message_id INTEGER NOT NULL,"
    " delivery_date TEXT NOT NULL, phone TEXT NOT NULL, text TEXT NOT NULL,"
    " code INTEGER NOT NULL, network_reference INTEGER, at TEXT NOT NULL,"
    " reported INTEGER NOT NULL)",
    "CREATE INDEX outcome_unreported ON outcome (id) WHERE reported = 0",
    "CREATE INDEX outcome_by_message ON outcome (message_id)",
    "PRAGMA user_version = 1",

    "INSERT INTO message (id, delivery_date, due, phone, text) VALUES"
    " (7, '2024-05-02T00:00:00', '2024-05-02T00:00:00', '600', 'waiting'),"
    " (8, 'tomorrow', '', '601', 'odd')",
    "INSERT INTO message (id, delivery_date, due, phone, text, state, attempts, reference,"
    " parts_sent, part_hash) VALUES"
    " (9, '2024-05-01T12:00:00', '2024-05-01T12:00:00', '602', 'leaving', 1, 2, 77, 3, 'hash')",
    "INSERT INTO setting VALUES ('run', '1'), ('parameter', 'COM4, 9600')",
    "INSERT INTO outcome (message_id, delivery_date, phone, text, code, network_reference, at,"
    " reported) VALUES (1, 'd', '500', 'sent', 1, 42, '2024-05-01T11:00:00', 1),"
    " (2, 'd', '501', 'failed', -36, NULL, '2024-05-01T11:00:01', 0)",
};

class StoreSchemaTest : public StoreFixture
{
protected:
    StoreSchemaTest()
    {
        m_store.reset();
        OtherConnection other(oldFile());
        for (const char *const statement : version1)
            other.run(QString::fromLatin1(statement));
    }

    QString oldFile() const { return m_folder.filePath(u"old.sqlite"_s); }
};

TEST_F(StoreSchemaTest, aFileOfTheFirstVersionKeepsAllThatItHolds)
{
    Store store(oldFile());
    done(store.open());
    EXPECT_EQ(OtherConnection(oldFile()).value(u"PRAGMA user_version"_s).toInt(),
              StoreSchema::latestVersion);
    EXPECT_EQ(store.queue().size(), 3);
    const QList<QueueRow> expected = {{u"tomorrow"_s, u"601"_s, u"odd"_s, 8},
                                      {noon(), u"602"_s, u"leaving"_s, 9},
                                      {u"2024-05-02T00:00:00"_s, u"600"_s, u"waiting"_s, 7}};
    EXPECT_EQ(given(store.queue().rows()), expected);
    EXPECT_TRUE(given(store.settings().isToRun()));
    EXPECT_EQ(given(store.settings().deviceSettings()).Parameter, u"COM4, 9600"_s);
    ASSERT_EQ(given(store.outcomes().unreportedFailures()).size(), 1);
    EXPECT_EQ(given(store.outcomes().unreportedFailures()).constFirst().phone, u"501"_s);
    ASSERT_EQ(given(store.queue().interrupted()).size(), 1);
    const StoredMessage leaving = given(store.queue().interrupted()).constFirst();
    EXPECT_EQ(leaving.id, 9);
    EXPECT_EQ(leaving.attempts, 2);
    EXPECT_EQ(leaving.partsSent, 3);
    EXPECT_EQ(leaving.reference, quint16{77});
    EXPECT_EQ(leaving.originalDate, noon());
    EXPECT_EQ(given(store.queue().first())->originalDate, u"tomorrow"_s);
}

TEST_F(StoreSchemaTest, theFileIsThenUsedLikeANewOne)
{
    Store store(oldFile());
    done(store.open());
    done(store.queue().add({{u"603"_s, u"new"_s}}, noon()));
    done(store.queue().finish(9, 1, 1, noon(), true));
    done(store.parts().count(noon()));
    EXPECT_EQ(given(store.parts().counts(noon())).inDay, 1);
    EXPECT_EQ(given(store.outcomes().prune(u"2024-05-01T12:00:00"_s, 10)), 1);
    EXPECT_EQ(store.queue().size(), 3);
}

TEST_F(StoreSchemaTest, aStepThatFailsLeavesTheFileAsItWas)
{
    // The last statement of the step has no room for its name.
    OtherConnection other(oldFile());
    other.run(u"CREATE TABLE outcome_by_time (a)"_s);
    const QList<QVariantList> before = other.contents();
    EXPECT_FALSE(Store(oldFile()).open());
    EXPECT_EQ(other.value(u"PRAGMA user_version"_s).toInt(), 1);
    EXPECT_EQ(other.contents(), before);
    EXPECT_EQ(other
                  .value(u"SELECT COUNT(*) FROM sqlite_schema "
                         "WHERE name = 'part_count'"_s)
                  .toInt(),
              0);

    other.run(u"DROP TABLE outcome_by_time"_s);
    Store store(oldFile());
    done(store.open());
    EXPECT_EQ(store.queue().size(), 3);
}

TEST_F(StoreSchemaTest, aSearchIndexOfTheFifthVersionIsGivenUp)
{
    done(Store(oldFile()).open());
    OtherConnection other(oldFile());
    other.run(u"DROP TABLE received_forgotten"_s);
    other.run(u"CREATE VIRTUAL TABLE outcome_search USING fts5(folded, content='', "
              "detail='none', columnsize=0, tokenize='trigram case_sensitive 1')"_s);
    other.run(u"INSERT INTO outcome_search (rowid, folded) VALUES (1, 'sent')"_s);
    other.run(u"INSERT INTO setting VALUES ('history_index', '1.15:1')"_s);
    other.run(u"PRAGMA user_version = 5"_s);
    Store store(oldFile());
    done(store.open());
    EXPECT_EQ(other.value(u"PRAGMA user_version"_s).toInt(), StoreSchema::latestVersion);
    EXPECT_TRUE(other.rows(u"SELECT name FROM sqlite_schema WHERE name LIKE 'outcome_search%'"_s)
                    .isEmpty());
    EXPECT_TRUE(other.rows(u"SELECT value FROM setting WHERE name = 'history_index'"_s).isEmpty());
    EXPECT_TRUE(other.rows(u"SELECT * FROM received_forgotten"_s).isEmpty());
    EXPECT_EQ(other.value(u"SELECT COUNT(*) FROM outcome"_s).toInt(), 2);
}

TEST_F(StoreSchemaTest, bothWaysLeadToTheSameTables)
{
    const auto columns = [](const QString &name) {
        OtherConnection other(name);
        return other.rows(u"SELECT m.name, c.name, c.type, c.\"notnull\" FROM "
                          "sqlite_schema m JOIN pragma_table_info(m.name) c "
                          "ORDER BY m.name, c.name"_s);
    };
    Store migrated(oldFile());
    done(migrated.open());
    reopen();
    EXPECT_EQ(columns(oldFile()), columns(file()));
    EXPECT_FALSE(columns(file()).isEmpty());
}

} // namespace

} // namespace norvane
