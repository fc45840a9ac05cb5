#include "NorvaneSMS/device/FolderPicker.h"

#include "common/NumberedFailure.h"
#include "support/RecordingMessageBoxes.h"
#include "support/ScriptedFolderBrowser.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class FolderPickerTest : public ::testing::Test
{
protected:
    bool pick() { return CD_ShowFolder(browser, nullptr, title, path, style); }

    const QString title = u"title"_s;
    const FolderBrowser::Style style = FolderBrowser::Style::Plain;
    QTemporaryDir folder;
    QString path = folder.path();
    ScriptedFolderBrowser browser;
    RecordingMessageBoxes boxes;
};

TEST_F(FolderPickerTest, aFolderThatExistsIsSelectedAtFirst)
{
    pick();
    EXPECT_EQ(browser.asked, (QList{ScriptedFolderBrowser::Asked{title, folder.path(), style}}));
}

TEST_F(FolderPickerTest, aPathThatDoesntExistSelectsNothing)
{
    for (const QString &missing : {QString(), folder.filePath(u"missing"_s), u":/"_s}) {
        path = missing;
        pick();
        EXPECT_EQ(browser.asked.last().preselected, QString());
        EXPECT_EQ(path, missing);
    }
}

TEST_F(FolderPickerTest, theChoiceComesOutCutAtItsFirstNul)
{
    browser.answer = {true, u"/a b "_s + QChar(u'\0') + u"rest"_s};
    EXPECT_TRUE(pick());
    EXPECT_EQ(path, u"/a b "_s);
}

TEST_F(FolderPickerTest, anItemWithoutAPathLeavesTheArgumentAndCountsAsConfirmed)
{
    browser.answer = {true, std::nullopt};
    EXPECT_TRUE(pick());
    EXPECT_EQ(path, folder.path());
}

TEST_F(FolderPickerTest, cancellingLeavesTheArgument)
{
    browser.answer = {false, u"/ignored"_s};
    EXPECT_FALSE(pick());
    EXPECT_EQ(path, folder.path());
}

TEST_F(FolderPickerTest, aFailureIsToldInABoxAndCountsAsCancelled)
{
    browser.failing = [] { throw NumberedFailure(70, u"Shell"_s, u"Permission denied"_s); };
    EXPECT_FALSE(pick());
    EXPECT_EQ(boxes.shown, (QList{RecordingMessageBoxes::Shown{
                               u"Shell encountered the following error in the CD_ShowFolder "
                               "function:\r\nError Number = 70\r\n"
                               "Error Description = Permission denied"_s,
                               MessageBoxes::Icon::Exclamation, MessageBoxes::Buttons::Ok,
                               u"  Error  -  Permission denied"_s}}));
    EXPECT_EQ(path, folder.path());
}

TEST_F(FolderPickerTest, theNumbersZeroAndTwentyGoOnSilently)
{
    for (const qint32 number : {0, 20}) {
        browser.failing = [number] { throw NumberedFailure(number, QString(), QString()); };
        EXPECT_FALSE(pick());
        EXPECT_TRUE(boxes.shown.isEmpty()) << number;
    }
}

TEST_F(FolderPickerTest, aFailureWithoutANumberIsToldAsAnInternalOne)
{
    browser.failing = [] { throw std::runtime_error("gone"); };
    EXPECT_FALSE(pick());
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(boxes.shown.first().text.contains(u"Error Number = 51\r\n"_s));
    EXPECT_EQ(boxes.shown.first().title, u"  Error  -  gone"_s);
}

} // namespace

} // namespace norvane
