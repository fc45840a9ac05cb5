#include "TovekSMService/log/EngineLog.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

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
            EXPECT_EQ(EngineLog::isLogged(one.type, "engine.host", level), level >= one.least)
                << one.type << ' ' << static_cast<int>(level);
    }
}

TEST(EngineLog, levelsHaveNames)
{
    EXPECT_EQ(EngineLog::levelNamed(u"error"_s), Level::Error);
    EXPECT_EQ(EngineLog::levelNamed(u"warning"_s), Level::Warning);
    EXPECT_EQ(EngineLog::levelNamed(u"info"_s), Level::Info);
    EXPECT_EQ(EngineLog::levelNamed(u"debug"_s), Level::Debug);
    EXPECT_FALSE(EngineLog::levelNamed(u"loud"_s));
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
        EXPECT_EQ(EngineLog::journalLine(one.type, "engine.host", u"text"_s),
                  QLatin1String(one.prefix) + u"engine.host: text"_s);
}

TEST(EngineLog, aPlainLineHasTimeLevelAndCategory)
{
    const QString time = u"12:00"_s;
    EXPECT_EQ(EngineLog::plainLine(QtWarningMsg, "engine.bus", u"text"_s, time),
              u"12:00 warning engine.bus: text"_s);
    EXPECT_EQ(EngineLog::plainLine(QtCriticalMsg, "engine.at", u"text"_s, time),
              u"12:00 error engine.at: text"_s);
}

TEST(EngineLog, whatIsLoggedWithoutACategoryShowsNone)
{
    for (const char *const none : {static_cast<const char *>(nullptr), "", "default"}) {
        EXPECT_EQ(EngineLog::journalLine(QtInfoMsg, none, u"text"_s), u"<6>text"_s);
        EXPECT_EQ(EngineLog::plainLine(QtInfoMsg, none, u"text"_s, u"12:00"_s),
                  u"12:00 info text"_s);
    }
}

TEST(EngineLog, whatTheToolkitSaysForItsOwnDebuggingIsLeftOut)
{
    for (const char *const other : {"qt.dbus.integration", "qt.core", "default", "engineer"}) {
        EXPECT_FALSE(EngineLog::isLogged(QtDebugMsg, other, Level::Debug)) << other;
        EXPECT_TRUE(EngineLog::isLogged(QtWarningMsg, other, Level::Debug)) << other;
    }
}

TEST(EngineLog, nothingThatADeviceSaysMakesALineOfItsOwn)
{
    const QString hostile = u"a\n<0>forged\r\x1B[2J\u2028b"_s;
    EXPECT_EQ(EngineLog::journalLine(QtInfoMsg, nullptr, hostile), u"<6>a <0>forged  [2J b"_s);
    EXPECT_EQ(EngineLog::plainLine(QtInfoMsg, nullptr, hostile, u"t"_s),
              u"t info a <0>forged  [2J b"_s);
}

} // namespace

} // namespace norvane
