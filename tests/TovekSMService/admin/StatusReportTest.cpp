#include "TovekSMService/admin/StatusReport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <gtest/gtest.h>

namespace {

QJsonObject parsed(const StatusReport &report)
{
    return QJsonDocument::fromJson(report.json).object();
}

QVariantMap calm(int status)
{
    return {{QStringLiteral("status"), status},
            {QStringLiteral("queue"), 3},
            {QStringLiteral("oldestDue"), QStringLiteral("2026-05-01T12:00:00")},
            {QStringLiteral("parameter"), QStringLiteral("COM1, 9600")},
            {QStringLiteral("trouble"), QStringList()}};
}

TEST(StatusReport, theExitCodeTellsTheState)
{
    QVariantMap troubled = calm(1);
    troubled[QStringLiteral("trouble")] = QStringList{QStringLiteral("the device: -4")};
    EXPECT_EQ(StatusReport::ofRunning(calm(1)).exitCode, 0);
    EXPECT_EQ(StatusReport::ofRunning(calm(0)).exitCode, 1);
    EXPECT_EQ(StatusReport::ofNone(calm(1)).exitCode, 2);
    EXPECT_EQ(StatusReport::ofRunning(troubled).exitCode, 3);
    EXPECT_EQ(StatusReport::ofTrouble(QStringLiteral("no answer")).exitCode, 3);
    EXPECT_EQ(parsed(StatusReport::ofRunning(troubled)).value(QStringLiteral("engine")),
              QStringLiteral("running"));
    EXPECT_EQ(parsed(StatusReport::ofNone(calm(1))).value(QStringLiteral("engine")),
              QStringLiteral("not up"));
}

TEST(StatusReport, theMembersAreTheSameWhateverTheState)
{
    const QStringList expected = {
        QStringLiteral("device"),     QStringLiteral("engine"),    QStringLiteral("lastError"),
        QStringLiteral("lastFailed"), QStringLiteral("oldestDue"), QStringLiteral("queue"),
        QStringLiteral("signal"),     QStringLiteral("toRun"),     QStringLiteral("trouble")};
    for (const StatusReport &report : {StatusReport::ofRunning(calm(1)), StatusReport::ofNone({}),
                                       StatusReport::ofTrouble(QStringLiteral("no answer"))})
        EXPECT_EQ(parsed(report).keys(), expected);
}

TEST(StatusReport, whatIsKnownHasItsPlaceAndWhatIsNotIsNull)
{
    QVariantMap state = calm(1);
    state[QStringLiteral("signal")] = 64;
    state[QStringLiteral("model")] = QStringLiteral("M \"1\"");
    state[QStringLiteral("errorCode")] = -4;
    state[QStringLiteral("errorText")] = QStringLiteral("minicom (12)");
    state[QStringLiteral("errorAt")] = QStringLiteral("2026-05-01T12:00:01");
    state[QStringLiteral("failureCode")] = -39;
    state[QStringLiteral("failureAt")] = QStringLiteral("2026-05-01T12:00:02");
    const QJsonObject report = parsed(StatusReport::ofRunning(state));
    EXPECT_EQ(report.value(QStringLiteral("toRun")), true);
    EXPECT_EQ(report.value(QStringLiteral("queue")), 3);
    EXPECT_EQ(report.value(QStringLiteral("oldestDue")), QStringLiteral("2026-05-01T12:00:00"));
    EXPECT_EQ(report.value(QStringLiteral("signal")), 64);
    EXPECT_EQ(report.value(QStringLiteral("device")).toObject().value(QStringLiteral("model")),
              QStringLiteral("M \"1\""));
    EXPECT_TRUE(
        report.value(QStringLiteral("device")).toObject().value(QStringLiteral("imei")).isNull());
    EXPECT_EQ(report.value(QStringLiteral("lastError")).toObject(),
              (QJsonObject{{QStringLiteral("code"), -4},
                           {QStringLiteral("text"), QStringLiteral("minicom (12)")},
                           {QStringLiteral("at"), QStringLiteral("2026-05-01T12:00:01")}}));
    EXPECT_EQ(report.value(QStringLiteral("lastFailed")).toObject(),
              (QJsonObject{{QStringLiteral("code"), -39},
                           {QStringLiteral("at"), QStringLiteral("2026-05-01T12:00:02")}}));
    const QJsonObject unknown = parsed(StatusReport::ofTrouble(QStringLiteral("no answer")));
    for (const char *const name : {"toRun", "queue", "oldestDue", "signal", "lastError"})
        EXPECT_TRUE(unknown.value(QLatin1String(name)).isNull()) << name;
    EXPECT_EQ(unknown.value(QStringLiteral("trouble")).toArray(),
              QJsonArray{QStringLiteral("no answer")});
}

} // namespace
