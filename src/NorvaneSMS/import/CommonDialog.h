#pragma once

#include "NorvaneSMS/import/FilePicker.h"

#include <QString>

namespace norvane {

/// Lets the operator pick a file by `picker`.
/// @param flags      in: what the dialog is to ask for; out: the same, or 0
/// @param path       in: the name to begin with; out: the full path, or empty
/// @param fileTitle  out: the file's name, or empty
/// @param filter     labels and patterns, each behind a "|"; emptied with the path
/// @return whether a file was confirmed. A failure of the dialog is shown in a box and gives false.
bool CD_ShowOpen_Save(FilePicker &picker, QWidget *owner, quint32 &flags, QString &path,
                      QString &fileTitle, const QString &defaultExtension, const QString &title,
                      QString &filter, const QString &initialFolder, FilePicker::Purpose purpose);

/// What is shown for a failure code of the dialog.
QString commonDialogErrorText(quint32 code);

} // namespace norvane
