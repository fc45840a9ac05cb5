#include "TovekSMService/store/StoreFixture.h"

#include <QFileInfo>

#include <sys/stat.h>

namespace {

class StoreQueue : public StoreFixture
{};

QueueRow row(qint64 id, const QString &phone, const QString &text)
{
    return {QStringLiteral("1999-01-01T00:00:00"), phone, text, id};
}

TEST_F(StoreQueue, newStoreIsEmpty)
{
    EXPECT_EQ(m_store->size(), 0);
    EXPECT_TRUE(m_store->rows().isEmpty());
    EXPECT_FALSE(m_store->first());
    EXPECT_FALSE(m_store->firstDue());
}

TEST_F(StoreQueue, queuedMessagesSurviveReopening)
{
    const qint64 id = add(noon(), QStringLiteral("+34600111222"), QStringLiteral("Olá \"ação\" €"));
    reopen();
    EXPECT_EQ(m_store->size(), 1);
    EXPECT_EQ(m_store->rows(), QList<QueueRow>({{noon(), QStringLiteral("+34600111222"),
                                                 QStringLiteral("Olá \"ação\" €"), id}}));
}

TEST_F(StoreQueue, rowsComeByDateAndThenByQueueing)
{
    m_store->add({{QStringLiteral("a"), {}}, {QStringLiteral("b"), {}}},
                 QStringLiteral("2024-05-02T00:00:00"));
    add(QStringLiteral("2024-05-01T23:59:59"), QStringLiteral("c"));
    add(QStringLiteral("2024-05-02T00:00:00"), QStringLiteral("d"));
    add(QStringLiteral("0999-12-31T23:59:59"), QStringLiteral("e"));
    EXPECT_EQ(phones().join(QString()), QStringLiteral("ecabd"));
    reopen();
    EXPECT_EQ(phones().join(QString()), QStringLiteral("ecabd"));
}

TEST_F(StoreQueue, idsAreNeverGivenTwice)
{
    const qint64 first = add(noon());
    m_store->clear();
    reopen();
    EXPECT_GT(add(noon()), first);
}

TEST_F(StoreQueue, nullTextsAreKeptAsEmptyOnes)
{
    m_store->add({{QString(), QString()}}, QString());
    reopen();
    ASSERT_EQ(m_store->size(), 1);
    EXPECT_EQ(m_store->rows().constFirst().phone, QString());
    EXPECT_EQ(m_store->rows().constFirst().message, QString());
    EXPECT_EQ(m_store->rows().constFirst().deliveryDate, QString());

    const qint64 id = m_store->rows().constFirst().id;
    EXPECT_TRUE(m_store->update({{QString(), QString(), QString(), id}}, {}));
    EXPECT_EQ(m_store->size(), 1);
}

TEST_F(StoreQueue, longAndStrangeTextsAreKeptLetterForLetter)
{
    const QString odd = QStringLiteral("a\tb\r\n'; DROP TABLE message; -- \U0001F600 \u200D ") +
                        QString(5000, u'ñ');
    add(noon(), QStringLiteral("call me"), odd);
    reopen();
    EXPECT_EQ(m_store->rows().constFirst().message, odd);
    EXPECT_EQ(m_store->rows().constFirst().phone, QStringLiteral("call me"));
}

TEST_F(StoreQueue, anEmptyListChangesNothing)
{
    m_store->add({}, noon());
    EXPECT_EQ(m_store->size(), 0);
}

TEST_F(StoreQueue, fileAndItsCompanionsAreForTheirOwnerAlone)
{
    add(noon());
    for (const char *const suffix : {"", "-wal", "-shm"}) {
        struct stat info = {};
        const QByteArray name = QFile::encodeName(file()) + suffix;
        ASSERT_EQ(::stat(name.constData(), &info), 0) << name.toStdString();
        EXPECT_EQ(info.st_mode & 0777, 0600u) << name.toStdString();
    }
}

TEST_F(StoreQueue, aFileWithWiderRightsIsNarrowed)
{
    m_store.reset();
    QFile::setPermissions(file(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadGroup |
                                      QFile::ReadOther);
    reopen();
    struct stat info = {};
    ASSERT_EQ(::stat(QFile::encodeName(file()).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 0777, 0600u);
}

TEST_F(StoreQueue, commitsReachTheDiskBeforeTheyReturn)
{
    OtherConnection other(file());
    EXPECT_EQ(other.value(QStringLiteral("PRAGMA journal_mode")).toString(), QStringLiteral("wal"));
    // The setting belongs to the connection, so it is read by having it fail where it isn't FULL.
    runOnStoreConnection(file(), QStringLiteral("CREATE TEMP TABLE told AS "
                                                "SELECT synchronous FROM pragma_synchronous"));
    runOnStoreConnection(file(), QStringLiteral("CREATE TEMP TABLE checked (level INTEGER CHECK "
                                                "(level = 2))"));
    runOnStoreConnection(file(),
                         QStringLiteral("INSERT INTO checked SELECT synchronous FROM told"));
}

TEST_F(StoreQueue, clearRemovesAllThatWaits)
{
    add(noon());
    add(QString());
    m_store->clear();
    EXPECT_EQ(m_store->size(), 0);
    reopen();
    EXPECT_EQ(m_store->size(), 0);
}

TEST_F(StoreQueue, clearLeavesTheMessageInProgress)
{
    const qint64 leaving = add(noon(), QStringLiteral("leaving"));
    const qint64 between = add(noon(), QStringLiteral("between"));
    add(noon(), QStringLiteral("waiting"));
    m_store->beginPart(leaving, std::nullopt, {});
    m_store->beginPart(between, 7, {});
    m_store->endPart(between, 1);
    m_store->clear();
    EXPECT_EQ(m_store->size(), 2);
    EXPECT_EQ(phones(), QStringList({QStringLiteral("leaving"), QStringLiteral("between")}));
}

TEST_F(StoreQueue, updateChangesPhoneAndTextAndNothingElse)
{
    const qint64 id = add(noon(), QStringLiteral("old"), QStringLiteral("old"));
    add(QStringLiteral("2024-05-01T12:00:01"), QStringLiteral("other"));
    EXPECT_TRUE(m_store->update({row(id, QStringLiteral("new"), QStringLiteral("words"))}, {}));
    reopen();
    ASSERT_EQ(m_store->size(), 2);
    EXPECT_EQ(m_store->rows().at(0),
              (QueueRow{noon(), QStringLiteral("new"), QStringLiteral("words"), id}));
    EXPECT_EQ(m_store->rows().at(1).phone, QStringLiteral("other"));
}

TEST_F(StoreQueue, updateRemovesWhatWasDeletedAndLeavesWhatCameSince)
{
    const qint64 first = add(noon(), QStringLiteral("first"));
    const qint64 second = add(noon(), QStringLiteral("second"));
    add(noon(), QStringLiteral("since"));
    EXPECT_TRUE(m_store->update({}, {first, second}));
    EXPECT_EQ(m_store->size(), 1);
    EXPECT_EQ(phones(), QStringList({QStringLiteral("since")}));
    reopen();
    EXPECT_EQ(m_store->size(), 1);
}

TEST_F(StoreQueue, updateNeverTouchesTheMessageInProgress)
{
    for (const bool isBetweenParts : {false, true}) {
        SCOPED_TRACE(isBetweenParts);
        const qint64 id = add(noon(), QStringLiteral("600"), QStringLiteral("told"));
        m_store->beginPart(id, 3, {});
        if (isBetweenParts)
            m_store->endPart(id, 1);
        EXPECT_FALSE(m_store->update({row(id, QStringLiteral("9"), QStringLiteral("new"))}, {}));
        EXPECT_FALSE(m_store->update({}, {id}));
        EXPECT_EQ(m_store->size(), 1);
        EXPECT_EQ(m_store->rows().constFirst().phone, QStringLiteral("600"));
        EXPECT_EQ(stored(id, "parts_sent").toInt(), isBetweenParts ? 1 : 0);
        EXPECT_EQ(stored(id, "reference").toInt(), 3);
        m_store->finish(id, 1, 1, noon(), true);
    }
}

TEST_F(StoreQueue, rowsInTimeAreChangedBesideThoseTooLate)
{
    const qint64 late = add(noon(), QStringLiteral("late"));
    const qint64 gone = add(noon(), QStringLiteral("gone"));
    const qint64 edited = add(noon(), QStringLiteral("edited"));
    m_store->beginPart(late, std::nullopt, {});
    EXPECT_FALSE(
        m_store->update({row(late, {}, {}), row(edited, QStringLiteral("new"), {})}, {late, gone}));
    EXPECT_EQ(phones(), QStringList({QStringLiteral("late"), QStringLiteral("new")}));
}

TEST_F(StoreQueue, messagesThatHaveLeftAreNeitherRevivedNorDeletedInTime)
{
    for (const qint32 code : {1, -36}) {
        SCOPED_TRACE(code);
        const qint64 id = add(noon());
        m_store->finish(id, code, std::nullopt, noon(), true);
        EXPECT_FALSE(m_store->update({row(id, QStringLiteral("9"), QStringLiteral("new"))}, {}));
        EXPECT_FALSE(m_store->update({}, {id}));
        EXPECT_EQ(m_store->size(), 0);
        EXPECT_TRUE(m_store->rows().isEmpty());
    }
}

TEST_F(StoreQueue, deletingWhatSomeoneElseDeletedIsInTimeAndChangingItIsNot)
{
    const qint64 id = add(noon());
    EXPECT_TRUE(m_store->update({}, {id}));
    EXPECT_TRUE(m_store->update({}, {id}));
    EXPECT_FALSE(m_store->update({row(id, QStringLiteral("9"), {})}, {}));
    EXPECT_EQ(m_store->size(), 0);
}

TEST_F(StoreQueue, aMessageSentInPartBeginsAnewOnlyWhenItSaysSomethingElse)
{
    const qint64 id = add(noon(), QStringLiteral("600"), QStringLiteral("told"));
    m_store->beginPart(id, 3, {});
    m_store->endPart(id, 1);
    m_store->postpone(id, 2, noon());
    m_store->releaseBetweenParts();

    EXPECT_TRUE(m_store->update({row(id, QStringLiteral("600"), QStringLiteral("told"))}, {}));
    std::optional<StoredMessage> message = m_store->first();
    EXPECT_EQ(message->partsSent, 1);
    EXPECT_EQ(message->reference, quint16{3});
    EXPECT_EQ(message->attempts, 2);

    EXPECT_TRUE(m_store->update({row(id, QStringLiteral("601"), QStringLiteral("told"))}, {}));
    message = m_store->first();
    EXPECT_EQ(message->partsSent, 0);
    EXPECT_FALSE(message->reference);
    EXPECT_EQ(message->attempts, 0);
}

class StoreOddDate : public StoreFixture, public testing::WithParamInterface<const char *>
{};

TEST_P(StoreOddDate, isKeptAsGivenAndGoesBeforeEveryDate)
{
    const QString date = QString::fromUtf8(GetParam());
    add(QStringLiteral("0001-01-01T00:00:00"), QStringLiteral("dated"));
    add(date, QStringLiteral("odd"));
    EXPECT_EQ(phones(), QStringList({QStringLiteral("odd"), QStringLiteral("dated")}));
    EXPECT_EQ(m_store->rows().constFirst().deliveryDate, date);
    ASSERT_TRUE(m_store->first());
    EXPECT_TRUE(m_store->first()->dateIsOdd);
    EXPECT_EQ(m_store->first()->deliveryDate, date);
    EXPECT_EQ(m_store->firstDue(), QString());
}

INSTANTIATE_TEST_SUITE_P(
    Dates, StoreOddDate,
    testing::Values("", "tomorrow", "2024-02-30T10:00:00", "2024-05-01 10:00:00",
                    "2024-05-01T10:00", "2024-05-01T24:00:00", "2024-05-01T10:00:60",
                    "2024-05-01T10:00.50", "2024-05-01T10:00:00Z", "2024-05-01T10:00:00+02:00",
                    "2024-05-01T10:00:00.000", "2024-5-1T10:00:00", "0000-01-01T00:00:00",
                    "12024-05-01T10:00:00", "2024-05-01t10:00:00", " 2024-05-01T10:00:00",
                    "2024-05-01T10:00:00\n", "٢٠٢٤-٠٥-٠١T10:00:00"));

class StoreDate : public StoreFixture, public testing::WithParamInterface<const char *>
{};

TEST_P(StoreDate, isTakenAsADateWhateverTheZoneSays)
{
    const QString date = QLatin1String(GetParam());
    add(date);
    EXPECT_FALSE(m_store->first()->dateIsOdd);
    EXPECT_EQ(m_store->firstDue(), date);
}

// The third and fourth lie in hours that the clock change of many places skips or repeats.
INSTANTIATE_TEST_SUITE_P(Dates, StoreDate,
                         testing::Values("2024-02-29T23:59:59", "0001-01-01T00:00:00",
                                         "2024-03-31T02:30:00", "2024-10-27T02:30:00",
                                         "9999-12-31T23:59:59"));

} // namespace
