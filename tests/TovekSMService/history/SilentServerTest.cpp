#include "TovekSMService/history/HistoryThread.h"

#include "TovekSMService/store/TestStoreShared.h"
#include "TovekSMService/time/TimeSource.h"
#include "support/PostgresProxy.h"
#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QStringList>

#include <gtest/gtest.h>

#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Direction = ProxiedConnection::Direction;

/// The thread of the history, whose database lies behind a server that may not answer.
class SilentServerTest : public testing::Test
{
protected:
    SilentServerTest()
    {
        testServer().freshDatabase(name());
        m_proxy.hold();
    }
    ~SilentServerTest() override
    {
        m_thread.reset();
        m_proxy.release();
        EXPECT_TRUE(waitUntil([this] { return m_proxy.openConnections() == 0; }))
            << "a thread that was left behind ends once the server answers";
    }

    static QString name() { return u"silent"_s; }
    void begin(const QString &refusal = {})
    {
        const HistoryStorage source{
            {}, m_proxy.address() + u' ' + PostgresServer::login(name()), refusal};
        m_thread =
            std::make_unique<HistoryThread>(source, TimeSource::system(), HistoryThread::Pace());
    }
    void ask()
    {
        m_thread->ask([](StoreDatabase &, const QueryLimit &) { return QVariantList{u"answer"_s}; },
                      [this](const StoreResult<QVariantList> &result) {
                          m_answers.append(result ? result->constFirst().toString()
                                                  : result.error().text());
                      });
    }
    bool isAnswered()
    {
        return waitUntil([this] { return !m_answers.isEmpty(); });
    }
    bool isConnecting()
    {
        return waitUntil([this] { return m_proxy.waiting(Direction::ToServer) == 1; });
    }

    PostgresProxy m_proxy{testServer().socketPath()};
    QStringList m_answers;
    std::unique_ptr<HistoryThread> m_thread;
};

TEST_F(SilentServerTest, aThreadThatWaitsForTheServerIsLeftBehind)
{
    begin();
    ask();
    ASSERT_TRUE(isConnecting());
    m_thread.reset();
    m_proxy.release();
    EXPECT_TRUE(waitUntil([this] { return m_proxy.openConnections() == 0; }));
    EXPECT_GT(m_proxy.messages(Direction::ToServer), 1) << "it was still there to have its session";
    QCoreApplication::processEvents();
    EXPECT_TRUE(m_answers.isEmpty());
}

TEST_F(SilentServerTest, aFileThatIsReplacedIsNoMatterOfTheServer)
{
    begin();
    ask();
    ASSERT_TRUE(isConnecting());
    m_thread->suspend();
    m_proxy.release();
    EXPECT_TRUE(isAnswered());
    m_thread->resume();
    EXPECT_EQ(m_answers, QStringList{u"answer"_s});
}

TEST_F(SilentServerTest, aDatabaseThatIsRefusedIsNotConnectedTo)
{
    m_proxy.release();
    begin(u"the password is not used"_s);
    ask();
    ASSERT_TRUE(isAnswered());
    EXPECT_EQ(m_answers, QStringList{u"the password is not used"_s});
    EXPECT_EQ(m_proxy.connections(), 0);
}

} // namespace

} // namespace norvane
