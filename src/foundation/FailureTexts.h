#pragma once

#include <QString>

namespace norvane {

/// What goes wrong when the console starts, or with what it stands on, in words that name the file
/// or the thing: descriptions of numbered failures. They come from the language file; where none is
/// loaded, or it doesn't have them, in English.
namespace FailureText {

/// @param file  the settings file, which the platform doesn't let be read
QString settingsUnreadable(const QString &file);
/// @param file  the settings file, which is no settings text
QString settingsDamaged(const QString &file);
/// @param file  the settings file, which the platform doesn't let be written
QString settingsNotSaved(const QString &file);
/// @param folder  the suite's data folder, or one above it
QString dataFolderNotMade(const QString &folder);
/// @param reason  one of those below, or what the bus says
QString engineNotStarted(const QString &reason);
QString noSessionBus();
/// @param program  the engine's executable
QString programNotFound(const QString &program);
QString engineDidNotComeUp();
QString engineEnded();
/// @param error  what the bus says
QString engineDoesNotAnswer(const QString &error);

} // namespace FailureText

} // namespace norvane
