#include "TovekSMService/host/SharedEngines.h"
#include "support/PostgresProxy.h"

#include <QDBusPendingCall>

namespace norvane {

namespace {

constexpr uint anyState = 63;
constexpr uint sentState = 2;

/// What windows hear and see of messages, each at its own engine.
class SharedHistory : public SharedEngines
{
protected:
    static QVariantList history(const QString &text = {}, uint states = anyState)
    {
        return {QString(), QString(), text, states, QString(), QString(), 0U};
    }
    /// Messages that an engine finds, -1 where it fails.
    static int found(const SharingEngine &engine, const QString &text = {}, uint states = anyState)
    {
        const QDBusMessage answer = engine.ask("GetHistory", history(text, states));
        if (answer.type() != QDBusMessage::ReplyMessage)
            return -1;
        int rows = 0;
        const auto array = answer.arguments().constFirst().value<QDBusArgument>();
        for (array.beginArray(); !array.atEnd(); ++rows) {
            array.beginStructure();
            while (!array.atEnd())
                array.asVariant();
            array.endStructure();
        }
        array.endArray();
        return rows;
    }
    static qsizetype changes(const SharingEngine &engine)
    {
        return engine.count(u"HistoryChanged"_s);
    }
    /// Looks at what an engine finds whenever that says that something has changed, and at no other
    /// time.
    static bool findsByChange(const SharingEngine &engine, uint states, int messages)
    {
        qsizetype looked = 0;
        return waitUntil([&] {
            if (changes(engine) == looked)
                return false;
            looked = changes(engine);
            return found(engine, {}, states) == messages;
        });
    }
    /// Waits until all engines have shown that they live so many times.
    static void awaitLife(int times)
    {
        const QString life = u"SELECT string_agg(seen::text, ' ' ORDER BY id) FROM engine"_s;
        for (int time = 0; time < times; ++time) {
            const QStringList before = value(life).split(u' ');
            EXPECT_TRUE(waitUntil([&] {
                const QStringList now = value(life).split(u' ');
                return now.at(1) != before.at(1) && now.at(3) != before.at(3);
            }));
        }
    }
};

TEST_F(SharedHistory, changesWithEachOutcomeOfAnyEngine)
{
    makeBoth();
    m_first->start();
    m_second->start();
    m_first->addMany(3, u"m"_s);
    EXPECT_TRUE(findsByChange(*m_second, anyState, 3));
    m_first->call("StartEngine");
    EXPECT_TRUE(findsByChange(*m_second, sentState, 3));
    EXPECT_TRUE(findsByChange(*m_first, sentState, 3));
    EXPECT_TRUE(m_second->received().isEmpty());
}

TEST_F(SharedHistory, changesForNobodyWhereNothingDidAndForAllWhereAnOptOutDoes)
{
    makeBoth();
    EXPECT_EQ(m_first->run({u"--engines"_s}).exitCode, 0); // makes the tables
    m_first->start();
    m_second->start();
    ASSERT_TRUE(eventually(u"SELECT count(*) FROM engine"_s, u"2"_s));
    const auto optOut = [this](const char *operation) {
        return m_first->ask(operation, {u"600111222"_s}).arguments().value(0).toBool();
    };
    EXPECT_TRUE(waitUntil([&] { return optOut("AddOptOut"); }));
    awaitLife(2); // whatever was to be told has been
    const qsizetype first = changes(*m_first);
    const qsizetype second = changes(*m_second);
    EXPECT_FALSE(optOut("AddOptOut")) << "it is there already";
    for (const auto &engine : {m_first.get(), m_second.get()}) {
        EXPECT_EQ(found(*engine), 0);
        engine->ask("GetSummary", {QString(), QString()});
        engine->ask("IsOptedOut", {u"600111222"_s});
        engine->call("GetQueueSize");
        engine->call("ReportState");
        engine->call("StartEngine");
    }
    awaitLife(1);
    EXPECT_EQ(found(*m_first), 0) << "what came before this answer has been heard";
    EXPECT_EQ(found(*m_second), 0);
    EXPECT_EQ(changes(*m_first), first);
    EXPECT_EQ(changes(*m_second), second);
    EXPECT_TRUE(optOut("RemoveOptOut"));
    EXPECT_TRUE(waitUntil([&] { return changes(*m_second) > second; }));
}

TEST_F(SharedHistory, isFoundByARoleThatMayMakeNothing)
{
    makeBoth();
    EXPECT_EQ(m_second->run({u"--engines"_s}).exitCode, 0); // makes the tables
    m_first->writeSettings(makeLeastRole());
    m_first->start();
    EXPECT_EQ(m_first->add(u"Mañana"_s).type(), QDBusMessage::ReplyMessage);
    m_first->call("StartEngine");
    EXPECT_TRUE(eventually(outcomes(), u"1x1"_s));
    EXPECT_EQ(found(*m_first, u"MANANA"_s, sentState), 1);
    EXPECT_EQ(found(*m_first, u"tarde"_s, sentState), 0);
    m_first.reset();
    dropLeastRole();
}

TEST_F(SharedHistory, failsWhileTheDatabaseIsAwayAndIsThereAgainWithIt)
{
    PostgresProxy proxy(server().socketPath());
    m_first = std::make_unique<SharingEngine>(
        QString(), proxy.address() + u' ' + PostgresServer::login(u"shared"_s), QStringList());
    proxy.setRefusing(true);
    m_first->start();
    const auto expectFailure = [this] {
        const QDBusMessage answer = m_first->ask("GetHistory", history());
        EXPECT_EQ(answer.errorName(), u"com.tovek.SMService.Error.Store"_s);
        EXPECT_FALSE(answer.errorMessage().isEmpty());
    };
    expectFailure();
    for (int time = 0; time < 2; ++time) {
        proxy.setRefusing(false);
        EXPECT_TRUE(waitUntil([this] { return found(*m_first) == 0; }));
        proxy.setRefusing(true);
        proxy.cut();
        expectFailure();
    }
    m_first.reset();
}

TEST_F(SharedHistory, doesNotKeepAnEngineFromEndingWhileItIsHeld)
{
    PostgresProxy proxy(server().socketPath());
    m_first = std::make_unique<SharingEngine>(
        QString(), proxy.address() + u' ' + PostgresServer::login(u"shared"_s), QStringList());
    m_first->start();
    EXPECT_TRUE(waitUntil([this] { return found(*m_first) == 0; }));
    proxy.hold();
    for (int call = 0; call < 8; ++call)
        QDBusConnection::sessionBus().asyncCall(
            m_first->question("GetSummary", {QString(), QString()}));
    EXPECT_TRUE(waitUntil([&] { return proxy.waiting(PostgresProxy::Direction::ToServer) > 0; }));
    m_first->stop();
    proxy.release();
    m_first->start();
    EXPECT_TRUE(waitUntil([this] { return found(*m_first) == 0; }));
    m_first.reset();
}

} // namespace

} // namespace norvane
