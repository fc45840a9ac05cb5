#pragma once

#include "NorvaneSMS/device/FolderBrowser.h"

namespace norvane {

/// The folder picker: lets the operator choose a folder. A failure of the dialog is shown in a
/// message box and counts as cancelled.
/// @param path  in: the folder to select at first, which is done only if it exists; out: the
///              choice, left as it was when the dialog was cancelled or the choice has no path
/// @return whether the operator confirmed
bool CD_ShowFolder(FolderBrowser &browser, QWidget *owner, const QString &title, QString &path,
                   FolderBrowser::Style style);

} // namespace norvane
