#include "TovekSMService/dispatch/DispatcherFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// What is on disk when, between one part and the next.
class DispatcherCommit : public DispatcherFixture
{
protected:
    /// No part to this phone can be noted as leaving.
    void refuse(const QString &phone)
    {
        m_other.refuse(u"UPDATE OF state"_s, u"message"_s,
                       u"NEW.state = 1 AND OLD.phone = '%1'"_s.arg(phone));
    }

    void allow() { m_other.allow(u"message"_s); }

    NotedLog m_log;
    OtherConnection m_other{file()};
};

TEST_F(DispatcherCommit, theNextPartBeginsWhenTheOutcomeOfTheLastIsOnDisk)
{
    QStringList seen;
    m_onSubmission = [&] {
        seen << onDisk(u"SELECT (SELECT COUNT(*) FROM outcome) || ' ' || "
                       "(SELECT group_concat(phone) FROM message WHERE state = 1)"_s)
                    .toString();
    };
    for (const char *const phone : {"600", "601", "602"})
        add(QLatin1String(phone));
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(seen, QStringList({u"0 600"_s, u"1 601"_s, u"2 602"_s}));
}

TEST_F(DispatcherCommit, theOutcomeAndTheNextPartsNoteAreTriedInOneCommit)
{
    refuse(u"601"_s);
    add(u"600"_s);
    add(u"601"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_log.count(u"can't be used"_s) >= 2; }));
    // The outcome fell with the note once, and was then kept without it.
    EXPECT_EQ(m_log.count(u"outcome waits"_s), 1);
    EXPECT_TRUE(has(u"sent 600 text 1"_s));
    EXPECT_EQ(submissions(), 1);
    allow();
    ASSERT_TRUE(until([this] { return has(u"sent 601 text 0"_s); }));
    EXPECT_EQ(submissions(), 2);
}

TEST_F(DispatcherCommit, theSameHoldsBetweenThePartsOfOneMessage)
{
    m_other.refuse(u"UPDATE OF state"_s, u"message"_s, u"NEW.state = 1 AND OLD.parts_sent = 1"_s);
    add(u"600"_s, longText(2));
    done(m_dispatcher->start());
    ASSERT_TRUE(until([this] { return m_log.count(u"can't be used"_s) >= 1; }));
    EXPECT_EQ(m_log.count(u"outcome waits"_s), 1);
    EXPECT_EQ(onDisk(u"SELECT state || ' ' || parts_sent FROM message"_s).toString(), u"2 1"_s);
    allow();
    ASSERT_TRUE(until([this] { return m_store->queue().size() == 0; }));
    EXPECT_EQ(m_line->payloads.size(), 2);
}

struct NoFollower
{
    const char *name;
    std::function<void(Dispatcher &)> what;
};

class DispatcherNoFollower : public DispatcherFixture,
                             public testing::WithParamInterface<NoFollower>
{};

TEST_P(DispatcherNoFollower, beginsWhenSomethingElseHasItsTurn)
{
    int submitted = -1;
    m_onSubmission = [this, &submitted] {
        if (submissions() > 1)
            return;
        GetParam().what(*m_dispatcher);
        QObject::connect(
            m_dispatcher.get(), &Dispatcher::sent, [this, &submitted](const QString &phone) {
                if (phone == "600"_L1)
                    submitted = static_cast<int>(
                        onDisk(u"SELECT COUNT(*) FROM message WHERE state = 1"_s).toInt());
            });
    };
    add(u"600"_s);
    add(u"601"_s);
    done(m_dispatcher->start());
    ASSERT_TRUE(until([&] { return submitted >= 0; }));
    EXPECT_EQ(submitted, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Wishes, DispatcherNoFollower,
    testing::Values(
        NoFollower{"stop", [](Dispatcher &engine) { done(engine.stop()); }},
        NoFollower{"finish", [](Dispatcher &engine) { engine.finish(); }},
        NoFollower{"applySettings", [](Dispatcher &engine) { done(engine.applySettings()); }},
        NoFollower{"testDevice", [](Dispatcher &engine) { engine.testDevice([](qint32) {}); }}),
    [](const auto &action) { return std::string(action.param.name); });

} // namespace

} // namespace norvane
