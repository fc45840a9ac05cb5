#include "TovekSMService/admin/StatusReport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QJsonObject parsed(const StatusReport &report)
{
    return QJsonDocument::fromJson(report.json).object();
}

QVariantMap calm(int status)
{
    return {{u"status"_s, status},
            {u"queue"_s, 3},
            {u"oldestDue"_s, u"2026-05-01T12:00:00"_s},
            {u"parameter"_s, u"COM1, 9600"_s},
            {u"trouble"_s, QStringList()}};
}

TEST(StatusReport, theExitCodeTellsTheState)
{
    QVariantMap troubled = calm(1);
    troubled[u"trouble"_s] = QStringList{u"the device: -4"_s};
    EXPECT_EQ(StatusReport::ofRunning(calm(1)).exitCode, 0);
    EXPECT_EQ(StatusReport::ofRunning(calm(0)).exitCode, 1);
    EXPECT_EQ(StatusReport::ofNone(calm(1)).exitCode, 2);
    EXPECT_EQ(StatusReport::ofRunning(troubled).exitCode, 3);
    EXPECT_EQ(StatusReport::fromFault(u"no answer"_s).exitCode, 3);
    EXPECT_EQ(parsed(StatusReport::ofRunning(troubled)).value(u"engine"_s), u"running"_s);
    EXPECT_EQ(parsed(StatusReport::ofNone(calm(1))).value(u"engine"_s), u"not up"_s);
}

TEST(StatusReport, theMembersAreTheSameWhateverTheState)
{
    const QStringList expected = {u"delivered"_s,  u"device"_s,    u"engine"_s,      u"lastError"_s,
                                  u"lastFailed"_s, u"oldestDue"_s, u"queue"_s,       u"signal"_s,
                                  u"toRun"_s,      u"trouble"_s,   u"undelivered"_s, u"unread"_s};
    for (const StatusReport &report : {StatusReport::ofRunning(calm(1)), StatusReport::ofNone({}),
                                       StatusReport::fromFault(u"no answer"_s)})
        EXPECT_EQ(parsed(report).keys(), expected);
}

TEST(StatusReport, whatTheNetworkSaidAndWhatCameIsCounted)
{
    QVariantMap state = calm(1);
    state[u"delivered"_s] = 7;
    state[u"undelivered"_s] = 2;
    state[u"unread"_s] = 0;
    for (const StatusReport &report :
         {StatusReport::ofRunning(state), StatusReport::ofNone(state)}) {
        EXPECT_EQ(parsed(report).value(u"delivered"_s), 7);
        EXPECT_EQ(parsed(report).value(u"undelivered"_s), 2);
        EXPECT_EQ(parsed(report).value(u"unread"_s), 0);
    }
    for (const char *const count : {"delivered", "undelivered", "unread"}) {
        for (const StatusReport &report :
             {StatusReport::fromFault(u"no answer"_s), StatusReport::ofRunning(calm(1))})
            EXPECT_TRUE(parsed(report).value(QLatin1String(count)).isNull()) << count;
    }
}

TEST(StatusReport, whatIsKnownHasItsPlaceAndWhatIsNotIsNull)
{
    QVariantMap state = calm(1);
    state[u"signal"_s] = 64;
    state[u"model"_s] = u"M \"1\""_s;
    state[u"errorCode"_s] = -4;
    state[u"errorText"_s] = u"minicom (12)"_s;
    state[u"errorAt"_s] = u"2026-05-01T12:00:01"_s;
    state[u"failureCode"_s] = -39;
    state[u"failureAt"_s] = u"2026-05-01T12:00:02"_s;
    const QJsonObject report = parsed(StatusReport::ofRunning(state));
    EXPECT_EQ(report.value(u"toRun"_s), true);
    EXPECT_EQ(report.value(u"queue"_s), 3);
    EXPECT_EQ(report.value(u"oldestDue"_s), u"2026-05-01T12:00:00"_s);
    EXPECT_EQ(report.value(u"signal"_s), 64);
    EXPECT_EQ(report.value(u"device"_s).toObject().value(u"model"_s), u"M \"1\""_s);
    EXPECT_TRUE(report.value(u"device"_s).toObject().value(u"imei"_s).isNull());
    EXPECT_EQ(report.value(u"lastError"_s).toObject(),
              (QJsonObject{{u"code"_s, -4},
                           {u"text"_s, u"minicom (12)"_s},
                           {u"at"_s, u"2026-05-01T12:00:01"_s}}));
    EXPECT_EQ(report.value(u"lastFailed"_s).toObject(),
              (QJsonObject{{u"code"_s, -39}, {u"at"_s, u"2026-05-01T12:00:02"_s}}));
    const QJsonObject unknown = parsed(StatusReport::fromFault(u"no answer"_s));
    for (const char *const name : {"toRun", "queue", "oldestDue", "signal", "lastError"})
        EXPECT_TRUE(unknown.value(QLatin1String(name)).isNull()) << name;
    EXPECT_EQ(unknown.value(u"trouble"_s).toArray(), QJsonArray{u"no answer"_s});
}

} // namespace

} // namespace norvane
