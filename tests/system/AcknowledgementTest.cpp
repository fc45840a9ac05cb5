#include "system/EngineProcess.h"
#include "system/ReplacedEngine.h"

#include <QCoreApplication>
#include <QMutex>

#include <functional>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// What calls an engine received, by name and first number, told across threads.
class NotedCalls
{
public:
    void add(const QString &call)
    {
        const QMutexLocker lock(&m_mutex);
        m_calls << call;
    }
    QStringList all() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_calls;
    }

private:
    mutable QMutex m_mutex;
    QStringList m_calls;
};

class Acknowledgement : public EngineProcess
{
protected:
    static constexpr qlonglong number = 7;

    static QDBusMessage event(const QDBusMessage &call, const char *name,
                              const QVariantList &arguments)
    {
        QDBusMessage event = QDBusMessage::createTargetedSignal(
            call.service(), QLatin1String(Bus::objectPath), QLatin1String(Bus::interfaceName),
            QLatin1String(name));
        event.setArguments(arguments);
        return event;
    }
    /// An engine that answers ReportState with one failure, and with its number where it has any.
    ReplacedEngine::Answer answers(bool hasNumbers)
    {
        return [this, hasNumbers](const QDBusMessage &call) -> QDBusMessage {
            QString noted = call.member();
            if (call.member() == "AcknowledgeReports"_L1) {
                if (!hasNumbers)
                    return {};
                for (const qlonglong report :
                     qdbus_cast<QList<qlonglong>>(call.arguments().constFirst()))
                    noted += u" %1"_s.arg(report);
            }
            calls.add(noted);
            if (call.member() == "GetEngineStatus"_L1)
                return call.createReply(QVariant(0));
            if (call.member() == "ReportState"_L1)
                raiseFailure(call, hasNumbers);
            return call.createReply();
        };
    }
    static void raiseFailure(const QDBusMessage &call, bool hasNumbers)
    {
        QDBusConnection bus(u"replaced engine"_s);
        bus.send(event(call, "SMSSentFailed", {u"600"_s, u"text"_s, -39}));
        bus.send(event(call, "WarningError", {-39, u"in doubt"_s}));
        if (hasNumbers)
            bus.send(event(call, "ReportRaised", {QVariant(number)}));
    }
    bool isAcknowledged() const { return calls.all().contains(acknowledgement); }

    const QString acknowledgement = u"AcknowledgeReports 7"_s;
    NotedCalls calls;
};

TEST_F(Acknowledgement, aReportIsAcknowledgedOnceItsHandlersHaveReturned)
{
    const ReplacedEngine engine(answers(true));
    const auto proxy = makeProxy();
    QStringList handled;
    const auto handle = [&](const QString &event) {
        EXPECT_EQ(proxy->GetEngineStatus(), 0); // whatever was sent before has been received
        EXPECT_FALSE(isAcknowledged()) << qPrintable(event);
        handled << event;
    };
    QObject::connect(proxy.get(), &SMSManager::SMSSentFailed,
                     [&](const QString &phone) { handle(phone); });
    QObject::connect(proxy.get(), &SMSManager::WarningError,
                     [&](qint32, const QString &text) { handle(text); });
    EXPECT_TRUE(eventually([&] { return isAcknowledged(); }));
    EXPECT_EQ(handled, (QStringList{u"600"_s, u"in doubt"_s}));
    EXPECT_EQ(calls.all().mid(0, 2), (QStringList{u"AcknowledgeReports"_s, u"ReportState"_s}))
        << "the engine knows that it will be acknowledged before it reports";
}

TEST_F(Acknowledgement, whatIsStillBeingHandledInAnEventLoopIsNotAcknowledged)
{
    const ReplacedEngine engine(answers(true));
    const auto proxy = makeProxy();
    bool warned = false;
    QObject::connect(proxy.get(), &SMSManager::WarningError, [&] { warned = true; });
    int failures = 0;
    QObject::connect(proxy.get(), &SMSManager::SMSSentFailed, [&] {
        // As a box does that tells of a failure in here.
        ++failures;
        proxy->GetEngineStatus(); // by its answer, all that was raised has arrived
        QCoreApplication::sendPostedEvents();
        EXPECT_TRUE(warned);
    });
    ASSERT_TRUE(eventually([&] { return failures == 1; }));
    proxy->GetEngineStatus();
    EXPECT_FALSE(isAcknowledged());
}

/// An event of the engine, and how something is done while it is handled.
struct HandledEvent
{
    const char *name;
    QVariantList arguments;
    void (*handle)(SMSManager &engine, const std::function<void()> &handler);
};

const HandledEvent handledEvents[] = {
    {"SMSQueueChanged",
     {1},
     [](SMSManager &engine, const std::function<void()> &handler) {
         QObject::connect(&engine, &SMSManager::SMSQueueChanged, handler);
     }},
    {"SMSSent",
     {u"600"_s, u"text"_s, 0},
     [](SMSManager &engine, const std::function<void()> &handler) {
         QObject::connect(&engine, &SMSManager::SMSSent, handler);
     }},
    {"WarningError",
     {-2, u"gone"_s},
     [](SMSManager &engine, const std::function<void()> &handler) {
         QObject::connect(&engine, &SMSManager::WarningError, handler);
     }},
};

class AcknowledgementInEvent : public Acknowledgement,
                               public testing::WithParamInterface<HandledEvent>
{};

TEST_P(AcknowledgementInEvent, whatComesWhileAnEventIsHandledInAnEventLoopIsNotAcknowledged)
{
    const ReplacedEngine engine([this](const QDBusMessage &call) {
        if (call.member() == "ReportState"_L1)
            QDBusConnection(u"replaced engine"_s)
                .send(event(call, GetParam().name, GetParam().arguments));
        return answers(true)(call);
    });
    const auto proxy = makeProxy();
    int events = 0;
    int failures = 0;
    QObject::connect(proxy.get(), &SMSManager::SMSSentFailed, [&] { ++failures; });
    GetParam().handle(*proxy, [&] {
        if (++events > 1)
            return;
        proxy->GetEngineStatus(); // by its answer, all that was raised has arrived
        QCoreApplication::sendPostedEvents();
        EXPECT_EQ(failures, 1);
    });
    ASSERT_TRUE(eventually([&] { return failures == 1; }));
    proxy->GetEngineStatus();
    EXPECT_FALSE(isAcknowledged());
}

INSTANTIATE_TEST_SUITE_P(Events, AcknowledgementInEvent, testing::ValuesIn(handledEvents),
                         [](const auto &event) { return std::string(event.param.name); });

TEST_F(Acknowledgement, anEngineThatIsOlderThanAcknowledgementsIsHeardAsEver)
{
    const ReplacedEngine engine(answers(false));
    const auto proxy = makeProxy();
    int failures = 0;
    QObject::connect(proxy.get(), &SMSManager::SMSSentFailed, [&] { ++failures; });
    EXPECT_TRUE(eventually([&] { return failures == 1; }));
    EXPECT_EQ(proxy->GetEngineStatus(), 0);
    EXPECT_EQ(calls.all(), (QStringList{u"ReportState"_s, u"GetEngineStatus"_s}));
}

TEST_F(Acknowledgement, whatADroppedProxyDidNotHandleIsToldToTheNextOne)
{
    plugIn();
    auto dropped = makeProxy();
    dropped->AddSMS(u"call me"_s, u"x"_s, {QDate(2020, 1, 1), QTime(0, 0), Qt::UTC});
    dropped->StartEngine();
    // It runs no event loop from here on, as a console whose thread stands still.
    while (dropped->GetQueueSize() > 0)
        QThread::yieldCurrentThread();
    const auto next = makeProxy();
    QList<qint32> codes;
    QObject::connect(next.get(), &SMSManager::SMSSentFailed,
                     [&](const QString &, const QString &, qint32 code) { codes << code; });
    dropped.reset();
    EXPECT_TRUE(eventually([&] { return !codes.isEmpty(); }));
    EXPECT_EQ(codes, QList<qint32>{-18});
}

} // namespace

} // namespace norvane
