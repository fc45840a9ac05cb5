#include "TovekSMService/reports/Inbox.h"

#include "TovekSMService/store/StoreFixture.h"

#include <algorithm>

namespace norvane {

namespace {

class InboxTest : public StoreFixture
{
protected:
    static QString now(int hour = 10)
    {
        return u"2026-11-22T%1:00:00"_s.arg(hour, 2, 10, QChar(u'0'));
    }

    static DeliverPdu text(const QString &words)
    {
        DeliverPdu message;
        message.sender = u"+34612345678"_s;
        message.sentAt = QDateTime(QDate(2026, 11, 22), QTime(9, 59), Qt::OffsetFromUTC, 3600);
        message.text = words;
        return message;
    }

    static DeliverPdu part(int number, int total, const QString &words, int reference = 7)
    {
        DeliverPdu message = text(words);
        message.concatenation =
            Concatenation{static_cast<quint16>(reference), false, total, number};
        return message;
    }

    /// As if the device gave it, each with a PDU of its own.
    std::optional<ReceivedMessage> take(const DeliverPdu &message, const QString &moment = now())
    {
        return take(QByteArray::number(++m_count), message, moment);
    }

    std::optional<ReceivedMessage> take(const QByteArray &pdu,
                                        const std::optional<DeliverPdu> &message,
                                        const QString &moment = now())
    {
        const auto taken = Inbox(*m_store).take(pdu, message, u"sim"_s, moment);
        EXPECT_TRUE(taken.has_value());
        return taken.value_or(std::nullopt);
    }

    QStringList texts() const
    {
        QStringList found;
        for (const ReceivedMessage &message : given(m_store->received().list({}, 0, 100)))
            found.append(message.text);
        return found;
    }

    int m_count = 0;
};

} // namespace

TEST_F(InboxTest, aMessageOfOnePartIsShownAtOnce)
{
    const auto shown = take(text(u"Hola"_s));
    ASSERT_TRUE(shown.has_value());
    EXPECT_EQ(shown->phone, u"+34612345678"_s);
    EXPECT_EQ(shown->text, u"Hola"_s);
    EXPECT_EQ(shown->at, now());
    EXPECT_EQ(shown->sentAt, u"2026-11-22T09:59:00+01:00"_s);
    EXPECT_FALSE(shown->isRead);
    EXPECT_EQ(texts(), QStringList{u"Hola"_s});
}

TEST_F(InboxTest, whatTheDeviceGivesTwiceIsKeptOnce)
{
    EXPECT_TRUE(take("00AB", text(u"Hola"_s)).has_value());
    EXPECT_FALSE(take("00ab", text(u"Hola"_s)).has_value());
    reopen();
    EXPECT_FALSE(take("00AB", text(u"Hola"_s)).has_value())
        << "after a crash before it was deleted";
    EXPECT_EQ(texts().size(), 1);
}

TEST_F(InboxTest, theSameWordsSentAgainAreAnotherMessage)
{
    take(text(u"Hola"_s));
    take(text(u"Hola"_s));
    EXPECT_EQ(texts().size(), 2);
}

TEST_F(InboxTest, partsArePutTogetherInAnyOrder)
{
    QList<int> order{1, 2, 3};
    int reference = 0;
    do {
        ++reference;
        std::optional<ReceivedMessage> shown;
        for (const int number : order) {
            EXPECT_FALSE(shown.has_value());
            shown = take(part(number, 3, QString::number(number), reference));
        }
        ASSERT_TRUE(shown.has_value());
        EXPECT_EQ(shown->text, u"123"_s);
    } while (std::next_permutation(order.begin(), order.end()));
    EXPECT_EQ(texts().size(), 6);
}

TEST_F(InboxTest, aPartThatComesTwiceIsShownOnce)
{
    take(part(1, 2, u"a"_s));
    take(part(1, 2, u"a"_s));
    EXPECT_EQ(take(part(2, 2, u"b"_s))->text, u"ab"_s);
}

TEST_F(InboxTest, messagesOfOthersAreNotMixed)
{
    take(part(1, 2, u"a"_s, 7));
    DeliverPdu other = part(2, 2, u"x"_s, 7);
    other.sender = u"+34699999999"_s;
    EXPECT_FALSE(take(other).has_value());
    EXPECT_FALSE(take(part(2, 2, u"x"_s, 8)).has_value()) << "another reference";
    EXPECT_FALSE(take(part(2, 3, u"x"_s, 7)).has_value()) << "another count";
    DeliverPdu wide = part(2, 2, u"x"_s, 7);
    wide.concatenation->wide = true;
    EXPECT_FALSE(take(wide).has_value()) << "another kind of reference";
    EXPECT_EQ(take(part(2, 2, u"b"_s, 7))->text, u"ab"_s);
}

TEST_F(InboxTest, partsWithoutASenderOrANamedSimArePutTogetherToo)
{
    DeliverPdu first = part(1, 2, u"a"_s);
    DeliverPdu second = part(2, 2, u"b"_s);
    first.sender = second.sender = QString();
    EXPECT_FALSE(take(first).has_value());
    EXPECT_EQ(take(second)->text, u"ab"_s);

    const auto ofNoSim = [this](const QByteArray &pdu, const DeliverPdu &message) {
        return given(Inbox(*m_store).take(pdu, message, QString(), now()));
    };
    EXPECT_FALSE(ofNoSim("01", part(1, 2, u"c"_s)).has_value());
    EXPECT_EQ(ofNoSim("02", part(2, 2, u"d"_s))->text, u"cd"_s);
}

TEST_F(InboxTest, aReferenceThatComesAgainIsAnotherMessage)
{
    take(part(1, 2, u"a"_s));
    take(part(2, 2, u"b"_s));
    take(part(1, 2, u"c"_s));
    EXPECT_EQ(take(part(2, 2, u"d"_s))->text, u"cd"_s);
    EXPECT_EQ(texts(), (QStringList{u"cd"_s, u"ab"_s}));
}

TEST_F(InboxTest, whatIsNotWholeAfterADayIsShownAsItIs)
{
    take(part(2, 4, u"b"_s), now(8));
    take(part(4, 4, u"d"_s), now(9));
    Inbox inbox(*m_store);
    EXPECT_FALSE(inbox.showIncomplete(now(8), now(20)).value().has_value());
    const auto shown = inbox.showIncomplete(now(9), now(20)).value();
    ASSERT_TRUE(shown.has_value());
    EXPECT_EQ(shown->text, u"[...]b[...]d"_s);
    EXPECT_EQ(shown->at, now(20));
    EXPECT_FALSE(inbox.showIncomplete(now(23), now(20)).value().has_value()) << "only once";
}

TEST_F(InboxTest, aSurrogatePairTornBetweenTwoPartsIsWholeAgain)
{
    take(part(1, 2, u"a\xD83D"_s));
    EXPECT_EQ(take(part(2, 2, u"\xDE00z"_s))->text, u"a\U0001F600z"_s);
}

TEST_F(InboxTest, aSurrogateWithoutItsPartnerIsNoCharacter)
{
    EXPECT_EQ(take(text(u"a\xD83Dz"_s))->text, u"a\uFFFDz"_s);
    EXPECT_EQ(take(text(u"\xDE00"_s))->text, u"\uFFFD"_s);
}

TEST_F(InboxTest, theNotificationOfAPictureMessageIsOneWord)
{
    DeliverPdu first = part(1, 2, {});
    first.content = DeliverPdu::Content::PictureNotification;
    DeliverPdu second = part(2, 2, {});
    second.content = DeliverPdu::Content::PictureNotification;
    EXPECT_FALSE(take(first).has_value());
    EXPECT_EQ(take(second)->text, u"MMS"_s);
    DeliverPdu alone = text({});
    alone.content = DeliverPdu::Content::PictureNotification;
    EXPECT_EQ(take(alone)->text, u"MMS"_s);
}

TEST_F(InboxTest, whatCannotBeReadIsKeptAsItCame)
{
    const auto shown = take("00FFGG", std::nullopt);
    ASSERT_TRUE(shown.has_value());
    EXPECT_EQ(shown->text, u"00FFGG"_s);
    EXPECT_EQ(shown->phone, QString());
    EXPECT_EQ(shown->sentAt, QString());
}

TEST_F(InboxTest, aPartThatAnotherMessageOfItsReferenceLeftBehindIsShownLater)
{
    take(part(1, 2, u"old "_s), now(8)); // its second part was lost
    take(part(1, 2, u"new "_s), now(9));
    EXPECT_EQ(take(part(2, 2, u"end"_s), now(10))->text, u"new end"_s);
    EXPECT_EQ(texts(), QStringList{u"new end"_s});
    const auto shown = Inbox(*m_store).showIncomplete(now(23), now(23));
    ASSERT_TRUE(shown && *shown);
    EXPECT_EQ((*shown)->text, u"old [...]"_s);
}

TEST_F(InboxTest, messagesAreListedLatestFirstByPageMomentAndText)
{
    take(text(u"uno"_s), now(8));
    take(text(u"dos 100%"_s), now(9));
    take(text(u"tres"_s), now(10));
    const ReceivedMessages &received = m_store->received();
    const auto textsOf = [&](const MessageFilter &filter, int offset = 0, int limit = 10) {
        QStringList found;
        for (const ReceivedMessage &message : given(received.list(filter, offset, limit)))
            found.append(message.text);
        return found;
    };
    EXPECT_EQ(textsOf({}), (QStringList{u"tres"_s, u"dos 100%"_s, u"uno"_s}));
    EXPECT_EQ(textsOf({}, 1, 1), QStringList{u"dos 100%"_s});
    EXPECT_EQ(textsOf({now(9), now(10), {}}), QStringList{u"dos 100%"_s});
    EXPECT_EQ(textsOf({{}, {}, u"TRE"_s}), QStringList{u"tres"_s});
    EXPECT_EQ(textsOf({{}, {}, u"0%"_s}), QStringList{u"dos 100%"_s});
    EXPECT_EQ(textsOf({{}, {}, u"_"_s}), QStringList());
    EXPECT_EQ(textsOf({{}, {}, u"345678"_s}).size(), 3);
}

TEST_F(InboxTest, whatIsReadIsNoLongerCountedAsUnread)
{
    const qint64 first = take(text(u"uno"_s))->id;
    take(text(u"dos"_s));
    EXPECT_EQ(m_store->received().unread().value(), 2);
    ASSERT_TRUE(m_store->received().markRead({first, 999}));
    EXPECT_EQ(m_store->received().unread().value(), 1);
    EXPECT_TRUE(given(m_store->received().list({}, 1, 1)).constFirst().isRead);
}

} // namespace norvane
