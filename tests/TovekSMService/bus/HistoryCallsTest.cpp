#include "TovekSMService/bus/HistoryCalls.h"

#include "TovekSMService/history/QueryLimit.h"
#include "TovekSMService/store/StoreFixture.h"
#include "contract/BusTypes.h"
#include "support/WaitUntil.h"

#include <QDBusError>
#include <QDBusPendingCall>
#include <QDBusVirtualObject>
#include <QSemaphore>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Answers each call with its first argument, once it is let go on.
class Answering : public QDBusVirtualObject
{
public:
    Answering(const QDBusConnection &bus, const QString &file)
        : m_calls(bus, {file, {}}, TimeSource::system(), [](const StoreFailure &) {})
    {}
    ~Answering() override { m_released.release(1000); }

    QString introspect(const QString &) const override { return {}; }
    bool handleMessage(const QDBusMessage &call, const QDBusConnection &) override
    {
        call.setDelayedReply(true);
        const QString text = call.arguments().constFirst().toString();
        m_calls.carryOut(call, call.arguments().at(1).toString(),
                         [this, text](StoreDatabase &, const QueryLimit &limit) {
                             m_released.acquire();
                             return answer(text, limit);
                         });
        ++m_handled;
        return true;
    }

    inline static const QString tooLong = u"takes too long"_s;
    inline static const QString damaged = u"is damaged"_s;

    QSemaphore m_released;
    int m_handled = 0;

private:
    static StoreResult<QVariantList> answer(const QString &text, const QueryLimit &limit)
    {
        if (text == tooLong)
            return failed(StoreFailure(StoreFailure::Kind::Busy, text));
        if (text == damaged)
            return failed(StoreFailure(StoreFailure::Kind::Corrupt, text));
        return limit.check().map([&] { return QVariantList{text}; });
    }

    HistoryCalls m_calls;
};

class HistoryCallsTest : public StoreFixture
{
protected:
    HistoryCallsTest() { EXPECT_TRUE(m_bus.registerVirtualObject(u"/history"_s, m_object.get())); }
    ~HistoryCallsTest() override
    {
        m_bus.unregisterObject(u"/history"_s);
        m_object.reset();
        QDBusConnection::disconnectFromBus(m_bus.name());
        for (const QDBusConnection &caller : m_callers)
            QDBusConnection::disconnectFromBus(caller.name());
    }

    QDBusConnection caller(int number)
    {
        while (m_callers.size() <= number)
            m_callers.append(QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                                           u"caller %1"_s.arg(m_callers.size())));
        return m_callers.at(number);
    }

    /// Gives the call when it has come.
    QDBusPendingCall ask(const QString &text, const QString &filter, int from = 0,
                         const QString &member = u"GetHistory"_s)
    {
        QDBusMessage call = QDBusMessage::createMethodCall(m_bus.baseService(), u"/history"_s,
                                                           u"some.interface"_s, member);
        call.setArguments({text, filter});
        const int handled = m_object->m_handled;
        const QDBusPendingCall pending = caller(from).asyncCall(call, hangMs);
        EXPECT_TRUE(waitUntil([&] { return m_object->m_handled > handled; }));
        return pending;
    }

    /// The text of the answer, or the name of its error.
    static QString answerTo(const QDBusPendingCall &call)
    {
        EXPECT_TRUE(waitUntil([&] { return call.isFinished(); }));
        return call.isError() ? call.error().name()
                              : call.reply().arguments().constFirst().toString();
    }

    QDBusConnection m_bus =
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"history of the test"_s);
    QList<QDBusConnection> m_callers;
    std::unique_ptr<Answering> m_object = std::make_unique<Answering>(m_bus, file());
    const QString m_superseded = QLatin1String(Bus::supersededError);
};

TEST_F(HistoryCallsTest, whoeverAsksForSomethingElseIsAnsweredForThatAlone)
{
    const QDBusPendingCall running = ask(u"1"_s, u"a"_s);
    const QDBusPendingCall waiting = ask(u"2"_s, u"ab"_s);
    const QDBusPendingCall last = ask(u"3"_s, u"abc"_s);
    const QDBusPendingCall nextPage = ask(u"4"_s, u"abc"_s);
    m_object->m_released.release(10);
    EXPECT_EQ(answerTo(running), m_superseded);
    EXPECT_EQ(answerTo(waiting), m_superseded);
    EXPECT_EQ(answerTo(last), u"3"_s);
    EXPECT_EQ(answerTo(nextPage), u"4"_s);
}

TEST_F(HistoryCallsTest, aQuestionThatTakesTooLongIsAnErrorOfItsOwn)
{
    const QDBusPendingCall failing = ask(Answering::tooLong, u"a"_s);
    const QDBusPendingCall damaged = ask(Answering::damaged, u"a"_s);
    m_object->m_released.release(10);
    EXPECT_EQ(answerTo(failing), QLatin1String(Bus::busyError));
    EXPECT_EQ(answerTo(damaged), u"com.tovek.SMService.Error.Store"_s);
}

TEST_F(HistoryCallsTest, othersAndOtherCallsAreNotSuperseded)
{
    const QDBusPendingCall first = ask(u"1"_s, u"a"_s);
    const QDBusPendingCall ofOther = ask(u"2"_s, u"b"_s, 1);
    const QDBusPendingCall ofOtherKind = ask(u"3"_s, u"c"_s, 0, u"GetInbox"_s);
    m_object->m_released.release(10);
    EXPECT_EQ(answerTo(first), u"1"_s);
    EXPECT_EQ(answerTo(ofOther), u"2"_s);
    EXPECT_EQ(answerTo(ofOtherKind), u"3"_s);
}

TEST_F(HistoryCallsTest, aCallerHasSixteenCallsThatWait)
{
    QList<QDBusPendingCall> calls;
    for (int number = 0; number < HistoryCalls::maxOfCaller; ++number)
        calls.append(ask(QString::number(number), u"a"_s));
    EXPECT_EQ(answerTo(ask(u"one too many"_s, u"a"_s)),
              QDBusError::errorString(QDBusError::LimitsExceeded));
    const QDBusPendingCall ofOther = ask(u"other"_s, u"a"_s, 1);
    m_object->m_released.release(100);
    for (int number = 0; number < HistoryCalls::maxOfCaller; ++number)
        EXPECT_EQ(answerTo(calls.at(number)), QString::number(number));
    EXPECT_EQ(answerTo(ofOther), u"other"_s);
    EXPECT_EQ(answerTo(ask(u"again"_s, u"a"_s)), u"again"_s);
}

TEST_F(HistoryCallsTest, allCallersTogetherHaveSixtyFour)
{
    for (int number = 0; number < HistoryCalls::maxOfAll; ++number)
        ask(QString::number(number), u"a"_s, number / 10);
    EXPECT_EQ(answerTo(ask(u"one too many"_s, u"a"_s, 9)),
              QDBusError::errorString(QDBusError::LimitsExceeded));
}

} // namespace

} // namespace norvane
