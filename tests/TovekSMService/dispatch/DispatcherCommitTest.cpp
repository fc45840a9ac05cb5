#include "TovekSMService/dispatch/DispatcherFixture.h"

namespace {

/// What is on disk when, between one part and the next.
class DispatcherCommit : public DispatcherFixture
{
protected:
    /// No part to this phone can be noted as leaving.
    void refuse(const QString &phone)
    {
        m_other.run(QStringLiteral("CREATE TRIGGER refuse BEFORE UPDATE OF state ON message WHEN "
                                   "NEW.state = 1 AND OLD.phone = '%1' BEGIN SELECT "
                                   "RAISE(ABORT, 'refused'); END")
                        .arg(phone));
    }

    void allow() { m_other.run(QStringLiteral("DROP TRIGGER refuse")); }

    NotedLog m_log;
    OtherConnection m_other{file()};
};

TEST_F(DispatcherCommit, theNextPartBeginsWhenTheOutcomeOfTheLastIsOnDisk)
{
    QStringList seen;
    m_onSubmission = [&] {
        seen << onDisk(QStringLiteral("SELECT (SELECT COUNT(*) FROM outcome) || ' ' || "
                                      "(SELECT group_concat(phone) FROM message WHERE state = 1)"))
                    .toString();
    };
    for (const char *const phone : {"600", "601", "602"})
        add(QLatin1String(phone));
    m_dispatcher->start();
    ASSERT_TRUE(until([this] { return m_store->size() == 0; }));
    EXPECT_EQ(seen, QStringList({QStringLiteral("0 600"), QStringLiteral("1 601"),
                                 QStringLiteral("2 602")}));
}

TEST_F(DispatcherCommit, theOutcomeAndTheNextPartsNoteAreTriedInOneCommit)
{
    refuse(QStringLiteral("601"));
    add(QStringLiteral("600"));
    add(QStringLiteral("601"));
    m_dispatcher->start();
    ASSERT_TRUE(until([this] { return m_log.count(QStringLiteral("can't be used")) >= 2; }));
    // The outcome fell with the note once, and was then kept without it.
    EXPECT_EQ(m_log.count(QStringLiteral("outcome waits")), 1);
    EXPECT_TRUE(has(QStringLiteral("sent 600 text 1")));
    EXPECT_EQ(submissions(), 1);
    allow();
    ASSERT_TRUE(until([this] { return has(QStringLiteral("sent 601 text 0")); }));
    EXPECT_EQ(submissions(), 2);
}

TEST_F(DispatcherCommit, theSameHoldsBetweenThePartsOfOneMessage)
{
    m_other.run(QStringLiteral("CREATE TRIGGER refuse BEFORE UPDATE OF state ON message WHEN "
                               "NEW.state = 1 AND OLD.parts_sent = 1 BEGIN SELECT "
                               "RAISE(ABORT, 'refused'); END"));
    add(QStringLiteral("600"), longText(2));
    m_dispatcher->start();
    ASSERT_TRUE(until([this] { return m_log.count(QStringLiteral("can't be used")) >= 1; }));
    EXPECT_EQ(m_log.count(QStringLiteral("outcome waits")), 1);
    EXPECT_EQ(onDisk(QStringLiteral("SELECT state || ' ' || parts_sent FROM message")).toString(),
              QStringLiteral("2 1"));
    allow();
    ASSERT_TRUE(until([this] { return m_store->size() == 0; }));
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
                if (phone == QLatin1String("600"))
                    submitted = static_cast<int>(
                        onDisk(QStringLiteral("SELECT COUNT(*) FROM message WHERE state = 1"))
                            .toInt());
            });
    };
    add(QStringLiteral("600"));
    add(QStringLiteral("601"));
    m_dispatcher->start();
    ASSERT_TRUE(until([&] { return submitted >= 0; }));
    EXPECT_EQ(submitted, 0);
}

INSTANTIATE_TEST_SUITE_P(
    Wishes, DispatcherNoFollower,
    testing::Values(NoFollower{"stop", [](Dispatcher &engine) { engine.stop(); }},
                    NoFollower{"finish", [](Dispatcher &engine) { engine.finish(); }},
                    NoFollower{"applySettings", [](Dispatcher &engine) { engine.applySettings(); }},
                    NoFollower{"testDevice",
                               [](Dispatcher &engine) { engine.testDevice([](qint32) {}); }}),
    [](const auto &wish) { return std::string(wish.param.name); });

} // namespace
