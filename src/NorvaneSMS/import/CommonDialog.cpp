#include "NorvaneSMS/import/CommonDialog.h"

#include "common/FailureNumbers.h"
#include "foundation/MessageBoxes.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

struct ErrorText
{
    quint32 code;
    const char16_t *text;
};

constexpr ErrorText errorTexts[] = {
    {0xFFFF, u"The dialog box could not be created.\rThe common dialog box function’s "
             u"call to the DialogBox function failed. For example, this error occurs if "
             u"the common dialog box call specifies an invalid window handle."},
    {1, u"The lStructSize member of the initialization structure for the "
        u"corresponding common dialog box is invalid."},
    {2, u"The common dialog box function failed during initialization. This error "
        u"often occurs when sufficient memory is not available."},
    {3, u"The ENABLETEMPLATE flag was set in the Flags member of the initialization "
        u"structure for the corresponding common dialog box, but a corresponding "
        u"template was not provided."},
    {4, u"The ENABLETEMPLATE flag was set in the Flags member of the initialization "
        u"structure for the corresponding common dialog box, but a corresponding "
        u"instance handle was not provide."},
    {5, u"The common dialog box function failed to load a specified string."},
    {6, u"The common dialog box function failed to find a specified resource."},
    {7, u"The common dialog box function failed to load a specified resource."},
    {8, u"The common dialog box function failed to lock a specified resource."},
    {9, u"The common dialog box function was unable to allocate memory for internal "
        u"structures."},
    {10, u"The common dialog box function was unable to lock the memory associated "
         u"with a handle."},
    {11, u"The ENABLEHOOK flag was set in the Flags member of the initialization "
         u"structure for the corresponding common dialog box, but a pointer to a "
         u"corresponding hook procedure was not provided."},
    {12, u"The RegisterWindowMessage function returned an error code when it was "
         u"called by the common dialog box function."},
    {0x3001, u"An attempt to subclass a list box failed because sufficient memory was not "
             u"available."},
    {0x3002, u"A filename is invalid."},
    {0x3003, u"The buffer pointed to by the lpstrFile member of the OPENFILENAME "
             u"structure is too small for the filename specified by the user."},
};

QString numberAndDescription(qint64 number, const QString &description)
{
    return u"\r\rError Number = "_s + QString::number(number) + u"\rError Description = "_s +
           description;
}

void show(const QString &text, const QString &title)
{
    messageBoxes().show(text, MessageBoxes::Icon::Exclamation, MessageBoxes::Buttons::Ok, title);
}

void showErrorCode(quint32 code)
{
    show(u"COMDLG32.DLL encountered the following error while calling the '"_s +
             u"DLG_GetOpenFileName"_s + u"' function:"_s +
             numberAndDescription(code, commonDialogErrorText(code)),
         u"  Common Dialog Error"_s);
}

void showFailure(const NumberedFailure &failure)
{
    show(failure.source() +
             u" encountered the following error in the CD_ShowOpen_Save function:"_s +
             numberAndDescription(failure.number(), failure.description()),
         u"  Error  -  "_s + failure.description());
}

FilePicker::Outcome picked(FilePicker &picker, const FilePicker::Request &request)
{
    try {
        FilePicker::Outcome outcome = picker.pick(request);
        if (!outcome.confirmed && outcome.errorCode != 0)
            showErrorCode(outcome.errorCode);
        return outcome;
    } catch (...) {
        showFailure(Failure::fromException(std::current_exception()));
        return {};
    }
}

} // namespace

QString commonDialogErrorText(quint32 code)
{
    const auto *const found = std::ranges::find(errorTexts, code, &ErrorText::code);
    return found != std::end(errorTexts) ? QString::fromUtf16(found->text) : u"Unknown Error"_s;
}

bool CD_ShowOpen_Save(FilePicker &picker, QWidget *owner, quint32 &flags, QString &path,
                      QString &fileTitle, const QString &defaultExtension, const QString &title,
                      QString &filter, const QString &initialFolder, FilePicker::Purpose purpose)
{
    const FilePicker::Outcome outcome = picked(
        picker, {owner, flags, path, defaultExtension, title, filter, initialFolder, purpose});
    if (!outcome.confirmed) {
        flags = 0;
        path.clear();
        fileTitle.clear();
        filter.clear();
        return false;
    }
    path = outcome.path;
    fileTitle = path.mid(path.lastIndexOf(u'/') + 1);
    return true;
}

} // namespace norvane
