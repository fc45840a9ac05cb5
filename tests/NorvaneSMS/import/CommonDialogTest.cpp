#include "NorvaneSMS/import/CommonDialog.h"

#include "NorvaneSMS/import/ScriptedImport.h"
#include "common/NumberedFailure.h"
#include "support/RecordingMessageBoxes.h"

#include <QWidget>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

class CommonDialog : public ::testing::Test
{
protected:
    bool pick()
    {
        return CD_ShowOpen_Save(picker, &owner, flags, path, title, u"TXT"_s, u"Pick"_s, filter,
                                u"/program"_s, FilePicker::Purpose::Open);
    }

    QWidget owner;
    ScriptedPicker picker;
    RecordingMessageBoxes boxes;
    quint32 flags = 0x1800;
    QString path;
    QString title = u"before"_s;
    QString filter = u"Texto(*.txt)|*.txt"_s;
};

TEST_F(CommonDialog, aConfirmedFileComesWithItsPathAndName)
{
    picker.outcome = {true, u"/a/list.txt"_s, 0};
    EXPECT_TRUE(pick());
    EXPECT_EQ(path, u"/a/list.txt"_s);
    EXPECT_EQ(title, u"list.txt"_s);
    EXPECT_EQ(flags, 0x1800U);
    EXPECT_EQ(filter, u"Texto(*.txt)|*.txt"_s);
    ASSERT_EQ(picker.requests.size(), 1);
    EXPECT_EQ(picker.requests.first().owner, &owner);
    EXPECT_EQ(picker.requests.first().defaultExtension, u"TXT"_s);
    EXPECT_EQ(picker.requests.first().title, u"Pick"_s);
    EXPECT_EQ(picker.requests.first().initialFolder, u"/program"_s);
}

TEST_F(CommonDialog, aCancelledDialogEmptiesWhatItWasGiven)
{
    EXPECT_FALSE(pick());
    EXPECT_EQ(flags, 0U);
    EXPECT_TRUE(path.isEmpty() && title.isEmpty() && filter.isEmpty());
    EXPECT_TRUE(boxes.shown.isEmpty()) << "code 0 is no failure";
}

TEST_F(CommonDialog, aFailureOfTheDialogIsShownWithItsNumber)
{
    picker.outcome.errorCode = 0x3003;
    EXPECT_FALSE(pick());
    const QString text =
        u"COMDLG32.DLL encountered the following error while calling the "
        u"'DLG_GetOpenFileName' function:\r\rError Number = 12291\rError Description = "
        u"The buffer pointed to by the lpstrFile member of the OPENFILENAME structure is too "
        u"small for the filename specified by the user."_s;
    EXPECT_EQ(boxes.shown, (QList<RecordingMessageBoxes::Shown>{
                               {text, MessageBoxes::Icon::Exclamation, MessageBoxes::Buttons::Ok,
                                u"  Common Dialog Error"_s}}));
    EXPECT_EQ(flags, 0U);
}

TEST_F(CommonDialog, anUnexpectedFailureIsShownWithItsSource)
{
    picker.whilePicking = [] { throw NumberedFailure(7, u"Picker"_s, u"Out of memory"_s); };
    EXPECT_FALSE(pick());
    EXPECT_EQ(boxes.shown,
              (QList<RecordingMessageBoxes::Shown>{
                  {u"Picker encountered the following error in the CD_ShowOpen_Save function:"
                   u"\r\rError Number = 7\rError Description = Out of memory"_s,
                   MessageBoxes::Icon::Exclamation, MessageBoxes::Buttons::Ok,
                   u"  Error  -  Out of memory"_s}}));
}

TEST_F(CommonDialog, everyCodeHasItsText)
{
    const QList<std::pair<quint32, const char *>> cases{
        {0xFFFF, "The dialog box could not be created.\r"
                 "The common dialog box function\u2019s call to the DialogBox function failed. For "
                 "example, this error occurs if the common dialog box call specifies an invalid "
                 "window handle."},
        {1, "The lStructSize member of the initialization structure for the corresponding common "
            "dialog box is invalid."},
        {2, "The common dialog box function failed during initialization. This error often occurs "
            "when sufficient memory is not available."},
        {3, "The ENABLETEMPLATE flag was set in the Flags member of the initialization structure "
            "for the corresponding common dialog box, but a corresponding template was not "
            "provided."},
        {4, "The ENABLETEMPLATE flag was set in the Flags member of the initialization structure "
            "for the corresponding common dialog box, but a corresponding instance handle was "
            "not provide."},
        {5, "The common dialog box function failed to load a specified string."},
        {6, "The common dialog box function failed to find a specified resource."},
        {7, "The common dialog box function failed to load a specified resource."},
        {8, "The common dialog box function failed to lock a specified resource."},
        {9, "The common dialog box function was unable to allocate memory for internal "
            "structures."},
        {10, "The common dialog box function was unable to lock the memory associated with a "
             "handle."},
        {11, "The ENABLEHOOK flag was set in the Flags member of the initialization structure for "
             "the corresponding common dialog box, but a pointer to a corresponding hook procedure "
             "was not provided."},
        {12, "The RegisterWindowMessage function returned an error code when it was called by the "
             "common dialog box function."},
        {0x3001, "An attempt to subclass a list box failed because sufficient memory was not "
                 "available."},
        {0x3002, "A filename is invalid."},
        {0x3003, "The buffer pointed to by the lpstrFile member of the OPENFILENAME structure is "
                 "too small for the filename specified by the user."},
        {13, "Unknown Error"},
        {0x1001, "Unknown Error"},
        {0x3000, "Unknown Error"},
    };
    for (const auto &[code, text] : cases)
        EXPECT_EQ(commonDialogErrorText(code), QString::fromUtf8(text)) << code;
}

TEST(FilePickerFilters, labelsAndPatternsComeInPairs)
{
    EXPECT_EQ(toolkitFilters(u"Texto(*.txt)|*.txt"_s), QStringList{u"Texto (*.txt)"_s});
    EXPECT_EQ(toolkitFilters(u"A|*.a;*.b|B|*.c"_s), (QStringList{u"A (*.a *.b)"_s, u"B (*.c)"_s}));
}

} // namespace norvane
