#include "NorvaneSMS/device/FolderPicker.h"

#include "common/FailureNumbers.h"
#include "foundation/FileSystem.h"
#include "foundation/MessageBoxes.h"
#include "foundation/PlatformHelpers.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Error numbers that don't mean a failure.
constexpr qint32 noFailure = 0;
constexpr qint32 resumeWithoutFailure = 20;

void showFailure(const NumberedFailure &failure)
{
    if (failure.number() == noFailure || failure.number() == resumeWithoutFailure)
        return;
    messageBoxes().show(failure.source() +
                            u" encountered the following error in the CD_ShowFolder function:\r\n"
                            "Error Number = "_s +
                            QString::number(failure.number()) + u"\r\nError Description = "_s +
                            failure.description(),
                        MessageBoxes::Icon::Exclamation, MessageBoxes::Buttons::Ok,
                        u"  Error  -  "_s + failure.description());
}

bool exists(const QString &path)
{
    const FileSystem files;
    return files.FolderExists(path) || files.FileExists(path);
}

FolderBrowser::Choice choose(FolderBrowser &browser, QWidget *owner, const QString &title,
                             const QString &path, FolderBrowser::Style style)
{
    try {
        return browser.browse(owner, title, exists(path) ? path : QString(), style);
    } catch (const NumberedFailure &failure) {
        showFailure(failure);
    } catch (const std::exception &other) {
        showFailure(NumberedFailure(Failure::InternalError, u"FolderBrowser"_s,
                                    QString::fromUtf8(other.what())));
    }
    return {};
}

} // namespace

bool CD_ShowFolder(FolderBrowser &browser, QWidget *owner, const QString &title, QString &path,
                   FolderBrowser::Style style)
{
    const FolderBrowser::Choice choice = choose(browser, owner, title, path, style);
    if (choice.confirmed && choice.path) {
        path = *choice.path;
        StripNulls(path);
    }
    return choice.confirmed;
}

} // namespace norvane
