#include "TovekSMService/reports/DeliveryReports.h"

#include "TovekSMService/store/StoreFixture.h"

#include "contract/ErrorCodes.h"

#include <QTimeZone>

#include <map>
#include <random>

namespace norvane {

namespace {

QString at(int minute)
{
    return u"2026-11-22T%1:%2:00"_s.arg(10 + minute / 60).arg(minute % 60, 2, 10, QChar(u'0'));
}

/// Parts and reports over a store in a folder of its own.
class DeliveryReportsTest : public StoreFixture
{
protected:
    /// Notes a part as sent.
    void send(qint64 message, int reference, const QString &phone = u"612345678"_s, int number = 1,
              int total = 1, const QString &sim = u"sim"_s)
    {
        ASSERT_TRUE(
            m_store->sentParts().add({message, number, total, reference, phone, sim, at(0)}));
    }

    /// A message that left with one part.
    /// @return its id
    qint64 sent(int reference, const QString &phone = u"612345678"_s)
    {
        const qint64 id = add(noon(), phone);
        send(id, reference, phone);
        finish(id);
        return id;
    }

    void finish(qint64 id)
    {
        ASSERT_TRUE(m_store->queue().finish(id, ErrorCode::ok, 0, at(0), true));
        ASSERT_TRUE(DeliveryReports(*m_store).refresh(id));
    }

    std::optional<DeliveryChange> report(int reference, int status,
                                         const QString &phone = u"612345678"_s,
                                         const QString &sim = u"sim"_s)
    {
        StatusReportPdu pdu;
        pdu.reference = static_cast<quint8>(reference);
        pdu.recipient = phone;
        pdu.status = static_cast<quint8>(status);
        // No two reports of a test are the same to the last digit, unless it says so.
        return take(QByteArray::number(++m_count, 16), pdu, sim);
    }

    std::optional<DeliveryChange> take(const QByteArray &hex, const StatusReportPdu &pdu,
                                       const QString &sim = u"sim"_s)
    {
        const auto change = DeliveryReports(*m_store).take(hex, pdu, sim, at(5));
        EXPECT_TRUE(change.has_value());
        return change.value_or(std::nullopt);
    }

    QString deliveryOf(qint64 message) const
    {
        OtherConnection other(file());
        const auto state = static_cast<DeliveryState>(
            other.value(u"SELECT delivery FROM outcome WHERE message_id = %1"_s.arg(message))
                .toInt());
        return QString::fromLatin1(nameOf(state));
    }

    QVariant value(const QString &statement) const
    {
        return OtherConnection(file()).value(statement);
    }

    int m_count = 0;
};

constexpr int delivered = 0x00;
constexpr int stillTrying = 0x20;
constexpr int notObtainable = 0x43;

} // namespace

TEST_F(DeliveryReportsTest, aMessageIsDeliveredWhenItsPartIs)
{
    const qint64 id = sent(42);
    EXPECT_EQ(deliveryOf(id), u"pending"_s);
    const auto change = report(42, delivered);
    EXPECT_EQ(change, (DeliveryChange{id, DeliveryState::Delivered, at(5)}));
    EXPECT_EQ(deliveryOf(id), u"delivered"_s);
    EXPECT_EQ(value(u"SELECT delivered_at FROM outcome"_s).toString(), at(5));
}

TEST_F(DeliveryReportsTest, aMessageIsDeliveredWhenAllItsPartsAre)
{
    const qint64 id = add(noon());
    for (int number = 1; number <= 3; ++number)
        send(id, number, u"612345678"_s, number, 3);
    finish(id);
    EXPECT_FALSE(report(3, delivered).has_value());
    EXPECT_FALSE(report(1, delivered).has_value());
    EXPECT_EQ(deliveryOf(id), u"pending"_s);
    EXPECT_TRUE(report(2, delivered).has_value());
    EXPECT_EQ(deliveryOf(id), u"delivered"_s);
}

TEST_F(DeliveryReportsTest, aPartThatLeftWithoutTheRequestLeavesTheMessageUnknown)
{
    const qint64 id = add(noon());
    send(id, 1, u"612345678"_s, 1, 2); // the network refused the request for the second one
    finish(id);
    EXPECT_EQ(report(1, delivered)->state, DeliveryState::Unknown);
    EXPECT_EQ(deliveryOf(id), u"unknown"_s);
}

TEST_F(DeliveryReportsTest, onePartThatWasRefusedIsEnough)
{
    const qint64 id = add(noon());
    send(id, 1, u"612345678"_s, 1, 2);
    send(id, 2, u"612345678"_s, 2, 2);
    finish(id);
    EXPECT_EQ(report(1, notObtainable)->state, DeliveryState::Refused);
    EXPECT_FALSE(report(2, delivered).has_value());
    EXPECT_EQ(deliveryOf(id), u"refused"_s);
}

TEST_F(DeliveryReportsTest, aNetworkThatIsStillTryingChangesNothingYet)
{
    const qint64 id = sent(42);
    EXPECT_FALSE(report(42, stillTrying).has_value());
    EXPECT_EQ(deliveryOf(id), u"pending"_s);
    EXPECT_EQ(value(u"SELECT status FROM sent_part"_s).toInt(), stillTrying);
    EXPECT_TRUE(report(42, delivered).has_value());
    EXPECT_EQ(deliveryOf(id), u"delivered"_s);
}

TEST_F(DeliveryReportsTest, aReportThatComesTwiceChangesNothing)
{
    const qint64 earlier = sent(42);
    const qint64 later = sent(42);
    StatusReportPdu pdu;
    pdu.reference = 42;
    pdu.recipient = u"612345678"_s;
    EXPECT_EQ(take("00AB", pdu)->message, later);
    EXPECT_FALSE(take("00AB", pdu).has_value());
    EXPECT_FALSE(take("00ab", pdu).has_value()) << "the digits of a device may be small";
    EXPECT_EQ(deliveryOf(earlier), u"pending"_s);
}

TEST_F(DeliveryReportsTest, theLatestPartWithoutAReportIsMeant)
{
    const qint64 earlier = sent(42);
    const qint64 later = sent(42);
    EXPECT_EQ(report(42, delivered)->message, later);
    EXPECT_EQ(report(42, notObtainable)->message, earlier);
    EXPECT_FALSE(report(42, delivered).has_value());
}

TEST_F(DeliveryReportsTest, anotherRecipientReferenceOrSimIsNotMeant)
{
    sent(42);
    EXPECT_FALSE(report(43, delivered).has_value());
    EXPECT_FALSE(report(42, delivered, u"612345679"_s).has_value());
    EXPECT_FALSE(report(42, delivered, u"612345678"_s, u"other"_s).has_value());
    EXPECT_TRUE(report(42, delivered).has_value());
}

TEST_F(DeliveryReportsTest, aDeviceThatDoesNotNameItsSimHasReportsToo)
{
    const qint64 id = add(noon());
    send(id, 42, u"612345678"_s, 1, 1, QString());
    finish(id);
    EXPECT_TRUE(report(42, delivered, u"612345678"_s, QString()).has_value());
    EXPECT_EQ(deliveryOf(id), u"delivered"_s);
}

TEST_F(DeliveryReportsTest, aRecipientIsKnownWithAPrefixToo)
{
    const qint64 id = sent(42);
    EXPECT_EQ(report(42, delivered, u"+34612345678"_s)->message, id);
}

TEST_F(DeliveryReportsTest, aNumberThatIsTheSameGoesBeforeOneWithAPrefix)
{
    const qint64 same = sent(42, u"+34612345678"_s);
    sent(42, u"612345678"_s);
    EXPECT_EQ(report(42, delivered, u"+34612345678"_s)->message, same);
}

TEST_F(DeliveryReportsTest, aReportForNothingThatWasSentIsKeptAsItIs)
{
    EXPECT_FALSE(report(42, delivered).has_value());
    EXPECT_EQ(value(u"SELECT pdu FROM status_report WHERE part_id IS NULL"_s).toByteArray(), "1");
}

TEST_F(DeliveryReportsTest, aReportThatComesBeforeTheMessageIsFinishedIsNotLost)
{
    const qint64 id = add(noon());
    send(id, 7, u"612345678"_s, 1, 2);
    EXPECT_FALSE(report(7, delivered).has_value());
    send(id, 8, u"612345678"_s, 2, 2);
    EXPECT_FALSE(report(8, delivered).has_value());
    finish(id);
    EXPECT_EQ(deliveryOf(id), u"delivered"_s);
}

TEST_F(DeliveryReportsTest, aMessageWithoutPartsHasNoState)
{
    const qint64 id = add(noon());
    finish(id);
    EXPECT_EQ(deliveryOf(id), QString());
}

TEST_F(DeliveryReportsTest, whatTheNetworkDoesNotTellInTimeIsUnknown)
{
    const qint64 id = sent(42);
    DeliveryReports reports(*m_store);
    EXPECT_TRUE(reports.expire(at(0), at(9), 10).value().isEmpty()) << "not before its time";
    EXPECT_EQ(reports.expire(at(1), at(9), 10).value(),
              (QList<DeliveryChange>{{id, DeliveryState::Unknown, at(9)}}));
    EXPECT_TRUE(reports.expire(at(1), at(9), 10).value().isEmpty()) << "only once";
    EXPECT_EQ(deliveryOf(id), u"unknown"_s);
    EXPECT_EQ(report(42, delivered)->state, DeliveryState::Delivered)
        << "a report that comes all the same still counts";
}

TEST_F(DeliveryReportsTest, theMomentIsTheNetworksInLocalTime)
{
    sent(42);
    StatusReportPdu pdu;
    pdu.reference = 42;
    pdu.recipient = u"612345678"_s;
    pdu.at = QDateTime(QDate(2026, 11, 22), QTime(12, 0), Qt::OffsetFromUTC, 2 * 3600);
    EXPECT_EQ(take("01", pdu)->at, pdu.at.toLocalTime().toString(u"yyyy-MM-ddTHH:mm:ss"_s));
}

TEST_F(DeliveryReportsTest, aStoreThatFailsKeepsNothing)
{
    sent(42);
    OtherConnection other(file());
    other.refuse(u"UPDATE"_s, u"outcome"_s);
    StatusReportPdu pdu;
    pdu.reference = 42;
    pdu.recipient = u"612345678"_s;
    EXPECT_FALSE(DeliveryReports(*m_store).take("01", pdu, u"sim"_s, at(5)).has_value());
    EXPECT_EQ(value(u"SELECT COUNT(*) FROM status_report"_s).toInt(), 0);
    EXPECT_EQ(value(u"SELECT state FROM sent_part"_s).toInt(),
              static_cast<int>(DeliveryState::Pending));
}

/// Some thousand parts with references that wrap, few recipients, and reports out of order, doubled
/// and lost: no report goes to another recipient's message, and where recipient and reference are
/// the same, the latest without one gets it.
TEST_F(DeliveryReportsTest, noReportGoesToAnotherRecipientsMessage)
{
    constexpr int messages = 2000;
    constexpr int recipients = 5;
    std::mt19937 random(20261122);
    const auto below = [&random](unsigned limit) { return static_cast<int>(random() % limit); };
    const auto phoneOf = [](int recipient) { return u"61234567%1"_s.arg(recipient); };

    struct Part
    {
        qint64 message;
        int reference;
        int recipient;
    };
    QList<Part> underway;
    std::map<std::pair<int, int>, QList<qint64>> open; ///< by reference and recipient
    const auto reportOne = [&](qsizetype place) {
        const Part part = underway.takeAt(place);
        QList<qint64> &candidates = open[{part.reference, part.recipient}];
        const auto change = report(part.reference, delivered, phoneOf(part.recipient));
        ASSERT_TRUE(change.has_value());
        EXPECT_EQ(change->message, candidates.takeLast());
        if (below(4) == 0) {
            EXPECT_FALSE(report(part.reference, delivered, u"699999999"_s).has_value());
        }
    };
    ASSERT_TRUE(m_store->database().together([&]() -> StoreResult<> {
        for (int i = 0; i < messages; ++i) {
            const int recipient = below(recipients);
            const qint64 id = 1'000 + i;
            send(id, i % 256, phoneOf(recipient));
            done(m_store->database().write(
                "INSERT INTO outcome (id, message_id, delivery_date, phone, text, code, at, "
                "reported) VALUES (?, ?, '', '', '', 1, '', 1)",
                {id, id}));
            underway.append({id, i % 256, recipient});
            open[{i % 256, recipient}].append(id);
            while (!underway.isEmpty() && below(2) == 0)
                reportOne(below(static_cast<unsigned>(underway.size())));
        }
        return {};
    }));
}

} // namespace norvane
