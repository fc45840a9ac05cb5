#pragma once

#include "gsm-simulator/AtAnswer.h"
#include "gsm-simulator/ModemState.h"

#include <optional>
#include <vector>

namespace norvane {

namespace simulator {

using CommandHandler = AtAnswer (*)(ModemState &, const AtCommand &);

struct CommandEntry
{
    const char *name;
    CommandHandler handler;
};

using CommandEntries = std::vector<CommandEntry>;

/// The commands by the subject that they belong to.
CommandEntries basicCommands();
CommandEntries identityCommands();
CommandEntries simCommands();
CommandEntries networkCommands();
CommandEntries statusCommands();
CommandEntries packetCommands();
CommandEntries settingCommands();
CommandEntries messageCommands();
CommandEntries receptionCommands();

/// A number of one of settingCommands().
int settingOf(const Profile &profile, const QByteArray &name, std::size_t field);

/// Takes the PDU that +CNMA opened its prompt for.
AtAnswer acknowledgeWithPdu(ModemState &modem, const QByteArray &hexadecimal);

/// Why the SIM keeps messages to itself, or nothing.
std::optional<AtAnswer> lockedMessages(const ModemState &modem);

/// The handler of a command, or null.
CommandHandler handlerOf(const QByteArray &name);

/// All names that start with "+" or "^", for +CLAC.
QByteArrayList extendedCommandNames();

} // namespace simulator

} // namespace norvane
