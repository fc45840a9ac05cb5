#include "TovekSMService/host/EngineHost.h"

#include "TovekSMService/dispatch/DispatcherFixture.h"
#include "TovekSMService/store/EngineFolder.h"
#include "contract/BusTypes.h"

#include <QDBusConnection>
#include <QDir>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Notes that the program was told to end, and lets it go on.
class EndWatch : public QObject
{
public:
    EndWatch() { qApp->installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() != QEvent::Quit)
            return false;
        ++ends;
        return true;
    }

    int ends = 0;
};

/// The engine as it runs, in this program: on the session bus and with a store on disk, but with
/// time that is turned and a device in memory.
class EngineHostTest : public testing::Test
{
protected:
    EngineHostTest()
    {
        QDir(m_folder.path()).removeRecursively();
        EXPECT_TRUE(m_folder.make());
    }
    ~EngineHostTest() override
    {
        m_host.reset();
        QDBusConnection::sessionBus().unregisterService(QLatin1String(Bus::serviceName));
    }

    QString file() const { return m_folder.storeFile(); }
    int number(const char *query) const
    {
        return OtherConnection(file()).value(QLatin1String(query)).toInt();
    }

    void queue(const QString &phone) const
    {
        Store store(file());
        done(store.open());
        done(store.settings().setDeviceSettings({0, QString(), 1, 1, u"/dev/fake, 9600"_s}));
        done(store.settings().setToRun(true));
        done(store.queue().add({{phone, u"text"_s}}, noon()));
    }
    void startHost()
    {
        auto line = std::make_unique<FakeModemLine>();
        m_line = line.get();
        makeOrdinary(*m_line);
        m_line->submitAnswer.clear();
        m_host = std::make_unique<EngineHost>(EngineName(), m_clock, std::move(line));
        ASSERT_EQ(static_cast<int>(m_host->start()), static_cast<int>(EngineHost::Start::Running));
    }
    /// Queues two messages and waits until the first one has left.
    void startSending()
    {
        queue(u"600"_s);
        queue(u"601"_s);
        startHost();
        ASSERT_TRUE(m_time.until([this] { return m_line->payloads.size() == 1; }));
        EXPECT_EQ(number("SELECT COUNT(*) FROM message WHERE state = 1"), 1);
    }
    /// Does this in the program's event loop, which is where a program can be ended.
    static void inLoop(const std::function<void()> &steps)
    {
        QMetaObject::invokeMethod(
            qApp,
            [&steps] {
                steps();
                QCoreApplication::exit();
            },
            Qt::QueuedConnection);
        QCoreApplication::exec();
    }

    const EngineFolder m_folder{EngineName()};
    TurnedTime m_time;
    SetClock m_clock{m_time};
    EndWatch m_watch;
    FakeModemLine *m_line = nullptr;
    std::unique_ptr<EngineHost> m_host;
};

TEST_F(EngineHostTest, endsBehindThePartInProgressAndBeginsNothingElse)
{
    startSending();
    inLoop([this] {
        m_host->end();
        m_time.pass(10'000);
        EXPECT_EQ(m_watch.ends, 0);
        m_line->say(FakeModemLine::info("+CMGS: 9"));
        m_time.settle();
        EXPECT_EQ(m_watch.ends, 1);
    });
    EXPECT_EQ(m_line->payloads.size(), 1);
    EXPECT_EQ(number("SELECT COUNT(*) FROM outcome WHERE code = 1"), 1);
    EXPECT_EQ(number("SELECT COUNT(*) FROM message"), 1);
    EXPECT_EQ(number("SELECT COUNT(*) FROM message WHERE state <> 0"), 0);
}

TEST_F(EngineHostTest, aPartThatIsNotAnsweredInTimeIsLeftAndReportedAndNeverSentAgain)
{
    startSending();
    inLoop([this] {
        m_host->end();
        m_time.pass(19'999);
        EXPECT_EQ(m_watch.ends, 0);
        m_time.pass(1);
        EXPECT_EQ(m_watch.ends, 1);
    });
    EXPECT_EQ(number("SELECT COUNT(*) FROM message WHERE state = 1"), 1);

    m_host.reset();
    startHost();
    m_line->submitAnswer = FakeModemLine::info("+CMGS: 9");
    ASSERT_TRUE(m_time.until([this] { return number("SELECT COUNT(*) FROM message") == 0; }));
    EXPECT_EQ(number("SELECT COUNT(*) FROM outcome WHERE phone = '600' AND code = -39"), 1);
    EXPECT_EQ(number("SELECT COUNT(*) FROM outcome WHERE phone = '601' AND code = 1"), 1);
    EXPECT_EQ(m_line->payloads.size(), 1);
}

TEST_F(EngineHostTest, theLossOfItsBusGivesThePartTheTimeOfAnyOtherEnd)
{
    startSending();
    inLoop([this] {
        ASSERT_TRUE(QMetaObject::invokeMethod(m_host.get(), "busLost", Qt::DirectConnection));
        m_time.pass(19'999);
        EXPECT_EQ(m_watch.ends, 0);
        m_time.pass(1);
        EXPECT_EQ(m_watch.ends, 1);
    });
    EXPECT_EQ(number("SELECT COUNT(*) FROM message WHERE state = 1"), 1);
}

TEST_F(EngineHostTest, aSecondWishToEndGivesThePartNoMoreTime)
{
    startSending();
    inLoop([this] {
        m_host->end();
        m_time.pass(15'000);
        m_host->end();
        m_time.pass(5000);
        EXPECT_EQ(m_watch.ends, 1);
    });
}

} // namespace

} // namespace norvane
