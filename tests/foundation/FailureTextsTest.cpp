#include "foundation/FailureTexts.h"

#include "foundation/Globals.h"
#include "foundation/LanguageFile.h"

#include <QFile>
#include <QSet>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class FailureTextsTest : public ::testing::Test
{
protected:
    ~FailureTextsTest() override { goLocalize.reset(); }

    static void load(const QString &file)
    {
        goLocalize = std::make_unique<cls_Localize>();
        ASSERT_TRUE(goLocalize->Init(file, u"ESN"_s));
    }
    static QStringList all()
    {
        return {
            FailureText::settingsUnreadable(u"/a/b"_s),  FailureText::settingsDamaged(u"/a/b"_s),
            FailureText::settingsNotSaved(u"/a/b"_s),    FailureText::dataFolderNotMade(u"/a/b"_s),
            FailureText::engineNotStarted(u"/a/b"_s),    FailureText::programNotFound(u"/a/b"_s),
            FailureText::engineDoesNotAnswer(u"/a/b"_s), FailureText::noSessionBus(),
            FailureText::engineDidNotComeUp(),           FailureText::engineEnded()};
    }
    static void expectNamesAndWords(const QStringList &texts)
    {
        for (qsizetype i = 0; i < texts.size(); ++i) {
            EXPECT_EQ(texts.at(i).count(u"/a/b"_s), i < 7 ? 1 : 0) << qPrintable(texts.at(i));
            EXPECT_GT(texts.at(i).size(), 15);
            EXPECT_FALSE(texts.at(i).contains(u"%1"_s));
            EXPECT_FALSE(texts.at(i).contains(u"???"_s));
        }
        EXPECT_EQ(QSet<QString>(texts.cbegin(), texts.cend()).size(), texts.size());
    }
};

TEST_F(FailureTextsTest, beforeALanguageFileIsLoadedTheyAreEnglish)
{
    expectNamesAndWords(all());
    EXPECT_EQ(FailureText::settingsDamaged(u"/a/b"_s),
              u"The settings file /a/b is damaged. Mend it or delete it"_s);
}

TEST_F(FailureTextsTest, theySpeakTheConsolesLanguage)
{
    const QStringList english = all();
    for (const QString &language : {u"ESN"_s, u"CAT"_s, u"PTG"_s}) {
        load(u"" NORVANE_SOURCE_DIR "/resources/language/NorvaneSMS_%1.XML"_s.arg(language));
        const QStringList texts = all();
        expectNamesAndWords(texts);
        for (qsizetype i = 0; i < texts.size(); ++i)
            EXPECT_NE(texts.at(i), english.at(i));
    }
}

TEST_F(FailureTextsTest, aLanguageFileThatLacksThemLeavesThemEnglish)
{
    const QStringList english = all();
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"other.XML"_s));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(LanguageFile::with(LanguageFile::row("1", "uno")));
    file.close();
    load(file.fileName());
    EXPECT_EQ(all(), english);
}

} // namespace

} // namespace norvane
