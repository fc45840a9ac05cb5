#include "gsm-simulator/CommandTable.h"

#include <QHash>

#include <algorithm>

namespace norvane {

namespace simulator {

namespace {

QHash<QByteArray, CommandHandler> allCommands()
{
    QHash<QByteArray, CommandHandler> commands;
    for (const CommandEntries &entries :
         {basicCommands(), identityCommands(), simCommands(), networkCommands(), statusCommands(),
          packetCommands(), settingCommands(), messageCommands(), receptionCommands()}) {
        for (const CommandEntry &entry : entries)
            commands.insert(QByteArray(entry.name), entry.handler);
    }
    return commands;
}

const QHash<QByteArray, CommandHandler> &table()
{
    static const QHash<QByteArray, CommandHandler> commands = allCommands();
    return commands;
}

} // namespace

CommandHandler handlerOf(const QByteArray &name)
{
    return table().value(name, nullptr);
}

std::optional<AtAnswer> lockedMessages(const ModemState &modem)
{
    if (!modem.hasSim())
        return messageError(MessageFailure::simFailure);
    switch (modem.sim.state()) {
    case SimCard::State::Ready:
        return std::nullopt;
    case SimCard::State::PinNeeded:
        return messageError(MessageFailure::pinRequired);
    case SimCard::State::PukNeeded:
        return messageError(MessageFailure::pukRequired);
    default:
        return messageError(MessageFailure::simFailure);
    }
}

QByteArrayList extendedCommandNames()
{
    QByteArrayList names;
    for (auto it = table().cbegin(); it != table().cend(); ++it) {
        if (it.key().startsWith('+') || it.key().startsWith('^'))
            names += it.key();
    }
    std::sort(names.begin(), names.end());
    return names;
}

} // namespace simulator

} // namespace norvane
