#pragma once

#include <QString>
#include <QtGlobal>

#include <optional>

namespace norvane {

/// What the program tells of itself on standard error, a line each: to the journal with the
/// priority that it takes ("<4>..."), else with the time. Neither texts of messages nor PINs are
/// given to it.
namespace EngineLog {

enum class Level { Error, Warning, Info, Debug };

/// "error", "warning", "info" or "debug".
std::optional<Level> levelNamed(const QString &name);

/// Whether a message of this type is told at `level`. Debug messages are the engine's own alone:
/// what the toolkit says of its work, when the environment switches it on, may hold texts and PINs.
bool isLogged(QtMsgType type, const char *category, Level level);

/// The line for the journal: what would end it early, or steer a terminal, is a space.
/// @param category  stands in front of the message; that of a message without one is left out
QString journalLine(QtMsgType type, const char *category, const QString &message);

/// The line for everything else. @param time  as it is to stand in front
QString plainLine(QtMsgType type, const char *category, const QString &message,
                  const QString &time);

/// The size in bytes at which the log file is set aside.
constexpr qint64 maxFileSize = 10 * 1024 * 1024;

/// What is logged from now on.
void setLevel(Level level);

/// Takes over everything that is logged from now on.
/// @param file  is kept within its size if standard error leads to it
void install(Level level, const QString &file);

} // namespace EngineLog

} // namespace norvane
