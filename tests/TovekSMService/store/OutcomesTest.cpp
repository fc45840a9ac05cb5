#include "TovekSMService/store/StoreFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class OutcomesTest : public StoreFixture
{
protected:
    /// An outcome of this moment.
    void finished(const char *at, bool reported = true, qint32 code = 1)
    {
        done(m_store->queue().finish(add(noon(), QLatin1String(at)), code, std::nullopt,
                                     QLatin1String(at), reported));
    }

    QStringList outcomes() const
    {
        QStringList moments;
        for (const QVariantList &row :
             OtherConnection(file()).rows(u"SELECT at FROM outcome ORDER BY at"_s))
            moments << row.constFirst().toString();
        return moments;
    }
};

TEST_F(OutcomesTest, anOutcomeIsKnownByItsId)
{
    const qint64 first = add(noon());
    const qint64 second = add(noon());
    const qint64 outcome = given(m_store->queue().finish(first, -36, std::nullopt, noon(), false));
    const qint64 other = given(m_store->queue().finish(second, -36, std::nullopt, noon(), false));
    done(m_store->outcomes().markReported({outcome}));
    const QList<Outcome> left = given(m_store->outcomes().unreportedFailures());
    ASSERT_EQ(left.size(), 1);
    EXPECT_EQ(left.constFirst().id, other);
}

TEST_F(OutcomesTest, failuresThatNobodyHeardAreKeptInOrderUntilTheyAreReported)
{
    const qint64 second = add(noon(), u"2"_s, u"b"_s);
    const qint64 first = add(noon(), u"1"_s, u"a"_s);
    const qint64 heard = add(noon());
    done(m_store->queue().finish(first, -39, std::nullopt, noon(), false));
    done(m_store->queue().finish(second, -17, std::nullopt, noon(), false));
    done(m_store->queue().finish(heard, -17, std::nullopt, noon(), true));
    EXPECT_TRUE(
        OtherConnection(file())
            .value(u"SELECT network_reference FROM outcome WHERE message_id = %1"_s.arg(first))
            .isNull());
    reopen();

    QList<Outcome> failures = given(m_store->outcomes().unreportedFailures());
    ASSERT_EQ(failures.size(), 2);
    EXPECT_EQ(failures.at(0).phone, u"1"_s);
    EXPECT_EQ(failures.at(0).text, u"a"_s);
    EXPECT_EQ(failures.at(0).code, -39);
    EXPECT_EQ(failures.at(1).phone, u"2"_s);
    EXPECT_EQ(failures.at(1).code, -17);

    done(m_store->outcomes().markReported({}));
    EXPECT_EQ(given(m_store->outcomes().unreportedFailures()).size(), 2);
    done(m_store->outcomes().markReported({failures.at(0).id}));
    reopen();
    failures = given(m_store->outcomes().unreportedFailures());
    ASSERT_EQ(failures.size(), 1);
    EXPECT_EQ(failures.constFirst().phone, u"2"_s);
}

TEST_F(OutcomesTest, oldOutcomesAreForgottenOldestFirstAndAFewAtATime)
{
    finished("2024-03-03T00:00:00");
    finished("2024-03-01T00:00:00");
    finished("2024-03-02T00:00:00", true, -36);
    finished("2024-03-04T00:00:00");
    const QString before = u"2024-03-04T00:00:00"_s;
    EXPECT_EQ(given(m_store->outcomes().prune(before, 2)), 2);
    EXPECT_EQ(outcomes(), QStringList({u"2024-03-03T00:00:00"_s, before}));
    EXPECT_EQ(given(m_store->outcomes().prune(before, 2)), 1);
    EXPECT_EQ(given(m_store->outcomes().prune(before, 2)), 0);
    EXPECT_EQ(outcomes(), QStringList({before}));
}

TEST_F(OutcomesTest, aFailureThatNobodyHasHeardIsKeptHoweverOld)
{
    finished("2020-01-01T00:00:00", false, -36);
    EXPECT_EQ(given(m_store->outcomes().prune(noon(), 10)), 0);
    done(m_store->outcomes().markReported(
        {given(m_store->outcomes().unreportedFailures()).constFirst().id}));
    EXPECT_EQ(given(m_store->outcomes().prune(noon(), 10)), 1);
}

TEST_F(OutcomesTest, theLastFailureIsTheNewestAmongTheOutcomes)
{
    EXPECT_FALSE(given(m_store->outcomes().lastFailure()));
    const char *const at[] = {"2026-01-01T00:00:01", "2026-01-01T00:00:02", "2026-01-01T00:00:03"};
    const qint32 codes[] = {-38, -39, 1};
    for (int number = 0; number < 3; ++number)
        done(m_store->queue().finish(add(QString()), codes[number], std::nullopt,
                                     QLatin1String(at[number]), true));
    const std::optional<LastFailure> failure = given(m_store->outcomes().lastFailure());
    ASSERT_TRUE(failure);
    EXPECT_EQ(failure->code, -39);
    EXPECT_EQ(failure->at, u"2026-01-01T00:00:02"_s);
}

class OutcomeList : public OutcomesTest
{
protected:
    OutcomeList()
    {
        keep("2026-01-01T10:00:00", u"601"_s, u"uno"_s);
        keep("2026-01-02T10:00:00", u"602"_s, u"DOS 100%"_s, -36);
        keep("2026-01-03T10:00:00", u"+34603"_s, u"tres_"_s);
    }

    void keep(const char *at, const QString &phone, const QString &text, qint32 code = 1)
    {
        done(m_store->queue().finish(add(noon(), phone, text), code,
                                     code == 1 ? std::optional(7) : std::nullopt, QLatin1String(at),
                                     true));
    }

    QStringList listed(const MessageFilter &filter, qint64 offset = 0, qint64 limit = 10) const
    {
        QStringList texts;
        for (const OutcomeRow &row : given(m_store->outcomes().list(filter, offset, limit)))
            texts.append(row.text);
        return texts;
    }
};

TEST_F(OutcomeList, aRowHoldsWhatIsKnownOfAMessage)
{
    const QList<OutcomeRow> rows = given(m_store->outcomes().list({}, 1, 2));
    ASSERT_EQ(rows.size(), 2);
    EXPECT_EQ(rows.at(0), (OutcomeRow{2,
                                      u"2026-01-02T10:00:00"_s,
                                      noon(),
                                      u"602"_s,
                                      u"DOS 100%"_s,
                                      -36,
                                      QString(),
                                      DeliveryState::None,
                                      {}}));
    EXPECT_EQ(rows.at(1), (OutcomeRow{1,
                                      u"2026-01-01T10:00:00"_s,
                                      noon(),
                                      u"601"_s,
                                      u"uno"_s,
                                      1,
                                      u"7"_s,
                                      DeliveryState::None,
                                      {}}));
}

TEST_F(OutcomeList, theLatestComeFirstAPageAtATime)
{
    EXPECT_EQ(listed({}), (QStringList{u"tres_"_s, u"DOS 100%"_s, u"uno"_s}));
    EXPECT_EQ(listed({}, 0, 1), QStringList{u"tres_"_s});
    EXPECT_EQ(listed({}, 2, 2), QStringList{u"uno"_s});
    EXPECT_EQ(listed({}, 3, 2), QStringList());
}

TEST_F(OutcomeList, theEndOfATimeIsNotInIt)
{
    EXPECT_EQ(listed({u"2026-01-02"_s, {}, {}}), (QStringList{u"tres_"_s, u"DOS 100%"_s}));
    EXPECT_EQ(listed({{}, u"2026-01-02T10:00:00"_s, {}}), QStringList{u"uno"_s});
    EXPECT_EQ(listed({u"2026-01-02T10:00:00"_s, u"2026-01-02T10:00:01"_s, {}}),
              QStringList{u"DOS 100%"_s});
}

TEST_F(OutcomeList, wordsAreSearchedInPhoneAndTextAsTheyAre)
{
    EXPECT_EQ(listed({{}, {}, u"dos"_s}), QStringList{u"DOS 100%"_s});
    EXPECT_EQ(listed({{}, {}, u"+346"_s}), QStringList{u"tres_"_s});
    EXPECT_EQ(listed({{}, {}, u"%"_s}), QStringList{u"DOS 100%"_s});
    EXPECT_EQ(listed({{}, {}, u"_"_s}), QStringList{u"tres_"_s});
    EXPECT_EQ(listed({{}, {}, u"'"_s}), QStringList());
    EXPECT_EQ(listed({{}, u"2026-01-02"_s, u"60"_s}), QStringList{u"uno"_s});
}

TEST_F(OutcomeList, aMomentOfDeliveryIsToldOfWhatWasDeliveredAlone)
{
    const QString later = u"2026-01-04T10:00:00"_s;
    EXPECT_TRUE(given(m_store->outcomes().setDelivery(1, DeliveryState::Delivered, later)));
    EXPECT_TRUE(given(m_store->outcomes().setDelivery(3, DeliveryState::Refused, later)));
    const QList<OutcomeRow> rows = given(m_store->outcomes().list({}, 0, 3));
    ASSERT_EQ(rows.size(), 3);
    EXPECT_EQ(rows.at(0).delivery, DeliveryState::Refused);
    EXPECT_EQ(rows.at(0).deliveredAt, QString());
    EXPECT_EQ(rows.at(2).delivery, DeliveryState::Delivered);
    EXPECT_EQ(rows.at(2).deliveredAt, later);
}

TEST_F(OutcomeList, messagesAreCountedByWhatTheNetworkSays)
{
    const auto count = [this](DeliveryState state) {
        return given(m_store->outcomes().count(state));
    };
    EXPECT_EQ(count(DeliveryState::Delivered), 0);
    EXPECT_TRUE(given(m_store->outcomes().setDelivery(1, DeliveryState::Delivered, noon())));
    EXPECT_TRUE(given(m_store->outcomes().setDelivery(3, DeliveryState::Unknown, noon())));
    EXPECT_FALSE(given(m_store->outcomes().setDelivery(2, DeliveryState::Delivered, noon())))
        << "it failed";
    EXPECT_EQ(count(DeliveryState::Delivered), 1);
    EXPECT_EQ(count(DeliveryState::Unknown), 1);
    EXPECT_EQ(count(DeliveryState::Refused), 0);
    EXPECT_TRUE(given(m_store->outcomes().setDelivery(3, DeliveryState::Delivered, noon())));
    EXPECT_EQ(count(DeliveryState::Delivered), 2);
    EXPECT_EQ(count(DeliveryState::Unknown), 0);
}

} // namespace

} // namespace norvane
