#pragma once

#include <QString>
#include <QStringList>

#include <optional>

/// What an administrator asks of the engine's executable.
struct CommandLine
{
    bool status = false;
    bool queue = false;
    std::optional<QString> device;
    std::optional<QString> pin;

    /// Whether there is something to do other than to run the engine.
    bool isQuery() const { return status || queue || device || pin; }

    /// Reads the arguments; ends the program for --help, --version and errors.
    static CommandLine parse(const QStringList &arguments);
};

/// Carries out what `commandLine` asks, over the bus where an engine runs, else in the store
/// itself.
/// @return the program's exit code
int carryOut(const CommandLine &commandLine);
