#include "TovekSMService/host/LogLevelSetting.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

using EngineLog::Level;

TEST(LogLevelSetting, isTheLevelThatTheFileNames)
{
    const struct
    {
        const char *settings;
        std::optional<Level> level;
    } cases[] = {{"[Log]\nLevel=debug\n", Level::Debug},
                 {"[Log]\nLevel= warning \n", Level::Warning},
                 {"[Sending]\nAttempts=2\n[Log]\nLevel=error\n", Level::Error},
                 {"", std::nullopt},
                 {"[Log]\n", std::nullopt},
                 {"[Sending]\nLevel=debug\n", std::nullopt},
                 {"[Log]\nLevel=loud\n", std::nullopt},
                 {"[Log]\nLevel=\n", std::nullopt}};
    for (const auto &one : cases)
        EXPECT_EQ(LogLevelSetting::parse(one.settings), one.level) << one.settings;
}

} // namespace

} // namespace norvane
