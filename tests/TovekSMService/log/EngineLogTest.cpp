#include "TovekSMService/log/EngineLog.h"

#include <gtest/gtest.h>

using EngineLog::Level;

namespace {

TEST(EngineLog, eachLevelTellsItselfAndWhatIsWorse)
{
    const struct
    {
        QtMsgType type;
        Level least;
    } cases[] = {{QtFatalMsg, Level::Error},
                 {QtCriticalMsg, Level::Error},
                 {QtWarningMsg, Level::Warning},
                 {QtInfoMsg, Level::Info},
                 {QtDebugMsg, Level::Debug}};
    for (const auto &one : cases) {
        for (const Level level : {Level::Error, Level::Warning, Level::Info, Level::Debug})
            EXPECT_EQ(EngineLog::isTold(one.type, "engine.host", level), level >= one.least)
                << one.type << ' ' << static_cast<int>(level);
    }
}

TEST(EngineLog, levelsHaveNames)
{
    EXPECT_EQ(EngineLog::levelNamed(QStringLiteral("error")), Level::Error);
    EXPECT_EQ(EngineLog::levelNamed(QStringLiteral("warning")), Level::Warning);
    EXPECT_EQ(EngineLog::levelNamed(QStringLiteral("info")), Level::Info);
    EXPECT_EQ(EngineLog::levelNamed(QStringLiteral("debug")), Level::Debug);
    EXPECT_FALSE(EngineLog::levelNamed(QStringLiteral("loud")));
}

TEST(EngineLog, aLineOfTheJournalBeginsWithItsPriority)
{
    const struct
    {
        QtMsgType type;
        const char *prefix;
    } cases[] = {{QtDebugMsg, "<7>"},
                 {QtInfoMsg, "<6>"},
                 {QtWarningMsg, "<4>"},
                 {QtCriticalMsg, "<3>"},
                 {QtFatalMsg, "<2>"}};
    for (const auto &one : cases)
        EXPECT_EQ(EngineLog::journalLine(one.type, "engine.host", QStringLiteral("text")),
                  QLatin1String(one.prefix) + QStringLiteral("engine.host: text"));
}

TEST(EngineLog, aPlainLineHasTimeLevelAndCategory)
{
    const QString time = QStringLiteral("12:00");
    EXPECT_EQ(EngineLog::plainLine(QtWarningMsg, "engine.bus", QStringLiteral("text"), time),
              QStringLiteral("12:00 warning engine.bus: text"));
    EXPECT_EQ(EngineLog::plainLine(QtCriticalMsg, "engine.at", QStringLiteral("text"), time),
              QStringLiteral("12:00 error engine.at: text"));
}

TEST(EngineLog, whatIsLoggedWithoutACategoryShowsNone)
{
    for (const char *const none : {static_cast<const char *>(nullptr), "", "default"}) {
        EXPECT_EQ(EngineLog::journalLine(QtInfoMsg, none, QStringLiteral("text")),
                  QStringLiteral("<6>text"));
        EXPECT_EQ(
            EngineLog::plainLine(QtInfoMsg, none, QStringLiteral("text"), QStringLiteral("12:00")),
            QStringLiteral("12:00 info text"));
    }
}

TEST(EngineLog, whatTheToolkitSaysForItsOwnDebuggingIsLeftOut)
{
    for (const char *const other : {"qt.dbus.integration", "qt.core", "default", "engineer"}) {
        EXPECT_FALSE(EngineLog::isTold(QtDebugMsg, other, Level::Debug)) << other;
        EXPECT_TRUE(EngineLog::isTold(QtWarningMsg, other, Level::Debug)) << other;
    }
}

TEST(EngineLog, nothingThatADeviceSaysMakesALineOfItsOwn)
{
    const QString hostile = QStringLiteral("a\n<0>forged\r\x1B[2J\u2028b");
    EXPECT_EQ(EngineLog::journalLine(QtInfoMsg, nullptr, hostile),
              QStringLiteral("<6>a <0>forged  [2J b"));
    EXPECT_EQ(EngineLog::plainLine(QtInfoMsg, nullptr, hostile, QStringLiteral("t")),
              QStringLiteral("t info a <0>forged  [2J b"));
}

} // namespace
