#include "TovekSMService/store/ReceivedMessages.h"

#include "TovekSMService/store/StoreFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class ReceivedMessagesTest : public StoreFixture
{
protected:
    ReceivedMessages &received() { return m_store->received(); }

    /// Keeps a part that waits.
    /// @return its id
    qint64 keepPart(const QByteArray &digest, const QString &at = noon())
    {
        ReceivedPart part;
        part.group.phone = u"600"_s;
        part.text = u"part"_s;
        return given(received().addPart(digest, part, at)).value_or(-1);
    }

    /// Keeps a message of one part.
    /// @return its id
    qint64 keep(const QString &at, bool isRead)
    {
        const qint64 part = keepPart(at.toLatin1(), at);
        const qint64 id = given(received().addMessage({0, at, {}, u"600"_s, at, false}, {part}));
        if (isRead)
            done(received().markRead({id}));
        return id;
    }

    QStringList moments()
    {
        QStringList moments;
        for (const ReceivedMessage &message : given(received().list({}, 0, 100)))
            moments.append(message.at);
        return moments;
    }

    int parts() const
    {
        return OtherConnection(file()).value(u"SELECT COUNT(*) FROM received_part"_s).toInt();
    }
};

TEST_F(ReceivedMessagesTest, aMessageIsListedAsItWasKept)
{
    const qint64 id = given(received().addMessage(
        {0, noon(), u"2024-05-01T11:59:00+02:00"_s, u"+34600"_s, u"ñ\U0001F600"_s, false}, {}));
    EXPECT_EQ(given(received().list({}, 0, 10)),
              (QList{ReceivedMessage{id, noon(), u"2024-05-01T11:59:00+02:00"_s, u"+34600"_s,
                                     u"ñ\U0001F600"_s, false}}));
    done(received().markRead({id}));
    reopen();
    EXPECT_TRUE(given(received().list({}, 0, 10)).constFirst().isRead);
}

TEST_F(ReceivedMessagesTest, aPageIsFilteredByTimeAndWords)
{
    keep(u"2026-01-01T00:00:00"_s, true);
    keep(u"2026-01-02T00:00:00"_s, false);
    keep(u"2026-01-03T00:00:00"_s, false);
    const auto listed = [this](const MessageFilter &filter, qint64 offset, qint64 limit) {
        QStringList moments;
        for (const ReceivedMessage &message : given(received().list(filter, offset, limit)))
            moments.append(message.at.left(10));
        return moments;
    };
    EXPECT_EQ(listed({}, 0, 2), (QStringList{u"2026-01-03"_s, u"2026-01-02"_s}));
    EXPECT_EQ(listed({}, 2, 2), QStringList{u"2026-01-01"_s});
    EXPECT_EQ(listed({u"2026-01-02"_s, u"2026-01-03"_s, {}}, 0, 9), QStringList{u"2026-01-02"_s});
    EXPECT_EQ(listed({{}, {}, u"-02t"_s}, 0, 9), QStringList{u"2026-01-02"_s});
    EXPECT_EQ(listed({{}, {}, u"-0_T"_s}, 0, 9), QStringList());
}

TEST_F(ReceivedMessagesTest, whatIsReadAndOldIsForgottenOldestFirstAndAFewAtATime)
{
    keep(u"2026-01-03T00:00:00"_s, true);
    keep(u"2026-01-01T00:00:00"_s, true);
    keep(u"2026-01-02T00:00:00"_s, true);
    keep(u"2026-01-04T00:00:00"_s, true);
    const QString before = u"2026-01-04T00:00:00"_s;
    EXPECT_EQ(given(received().prune(before, 2)), 2);
    EXPECT_EQ(OtherConnection(file()).rows(u"SELECT text FROM received_forgotten ORDER BY text"_s),
              (QList<QVariantList>{{u"2026-01-01T00:00:00"_s}, {u"2026-01-02T00:00:00"_s}}));
    EXPECT_EQ(moments(), (QStringList{before, u"2026-01-03T00:00:00"_s}));
    EXPECT_EQ(parts(), 2);
    EXPECT_EQ(given(received().prune(before, 2)), 1);
    EXPECT_EQ(given(received().prune(before, 2)), 0);
    EXPECT_EQ(moments(), QStringList{before});
    EXPECT_EQ(parts(), 1);
}

TEST_F(ReceivedMessagesTest, whatNobodyHasReadIsKeptHoweverOld)
{
    const qint64 id = keep(u"2020-01-01T00:00:00"_s, false);
    EXPECT_EQ(given(received().prune(noon(), 10)), 0);
    EXPECT_EQ(moments().size(), 1);
    done(received().markRead({id}));
    EXPECT_EQ(given(received().prune(noon(), 10)), 1);
    EXPECT_EQ(moments().size(), 0);
}

TEST_F(ReceivedMessagesTest, partsThatWaitForOthersAreNotForgotten)
{
    keepPart("waits", u"2020-01-01T00:00:00"_s);
    keep(u"2020-01-01T00:00:00"_s, true);
    EXPECT_EQ(given(received().prune(noon(), 10)), 1);
    EXPECT_EQ(parts(), 1);
    EXPECT_EQ(given(received().waitingSince(noon(), 10)).size(), 1);
}

TEST_F(ReceivedMessagesTest, aPartIsKnownWhenItComesAgainAsLongAsItsMessageIsKept)
{
    const QString at = u"2026-01-01T00:00:00"_s;
    keep(at, true);
    EXPECT_EQ(keepPart(at.toLatin1()), -1);
    EXPECT_EQ(given(received().prune(u"2026-01-02"_s, 10)), 1);
    EXPECT_NE(keepPart(at.toLatin1()), -1);
}

} // namespace

} // namespace norvane
