#include "support/WaitUntil.h"

#include <QFileInfo>
#include <QProcess>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

// What the timer's callback calls must not be looked up on the timer's thread at its first use.
TEST(ConsoleProgramTest, programIsBoundWhenItIsLoaded)
{
    const QString program = QStringLiteral(NORVANE_BIN_DIR "/NorvaneSMS");
    ASSERT_TRUE(QFileInfo(program).isExecutable());
    QProcess reader;
    reader.start(u"readelf"_s, {u"--wide"_s, u"-d"_s, program});
    ASSERT_TRUE(reader.waitForFinished(hangMs));
    ASSERT_EQ(reader.exitCode(), 0);
    // "(FLAGS)  BIND_NOW" or "(FLAGS_1)  Flags: NOW PIE", as the linker has it.
    EXPECT_TRUE(reader.readAllStandardOutput().contains("NOW"));
}

} // namespace norvane
