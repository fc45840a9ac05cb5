#include "TovekSMService/store/EngineName.h"

#include "TovekSMService/store/EngineFolder.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

EngineName named(const QString &text)
{
    const auto name = EngineName::parse(text);
    EXPECT_TRUE(name) << text.toStdString();
    return name.value_or(EngineName());
}

TEST(EngineNameTest, isOfSmallLettersDigitsAndUnderscoresWithALetterFirst)
{
    for (const QString &text : {u"a"_s, u"second"_s, u"tray_2"_s, u"z9_"_s, QString(32, u'x')})
        EXPECT_EQ(named(text).text(), text);
    for (const QString &text :
         {u""_s, u"Second"_s, u"2nd"_s, u"_second"_s, u"se cond"_s, u"se-cond"_s, u"se.cond"_s,
          u"../second"_s, u"a/b"_s, u"segón"_s, u"second\n"_s, u"a\0b"_s, QString(33, u'x')})
        EXPECT_FALSE(EngineName::parse(text)) << text.toStdString();
}

TEST(EngineNameTest, standsBehindTheNameOfTheUnnamedEngineOnTheBus)
{
    EXPECT_EQ(EngineName().busName(), u"com.tovek.SMService"_s);
    EXPECT_EQ(named(u"tray_2"_s).busName(), u"com.tovek.SMService.tray_2"_s);
}

TEST(EngineNameTest, givesTheEngineAFolderOfItsOwnBelowThatOfTheUnnamedOne)
{
    const QString unnamed = EngineFolder(EngineName()).path();
    EXPECT_EQ(unnamed, qEnvironmentVariable("XDG_DATA_HOME") + u"/TovekSMService"_s);
    const EngineFolder folder(named(u"second"_s));
    EXPECT_EQ(folder.path(), unnamed + u"/engines/second"_s);
    EXPECT_EQ(folder.storeFile(), unnamed + u"/engines/second/queue.sqlite"_s);
    EXPECT_EQ(folder.lockFile(), unnamed + u"/engines/second/engine.lock"_s);
    EXPECT_EQ(folder.logFile(), unnamed + u"/engines/second/engine.log"_s);
}

} // namespace

} // namespace norvane
