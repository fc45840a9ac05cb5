#pragma once

#include "gsm-simulator/ModemSettings.h"
#include "gsm-simulator/SimulatedModem.h"

#include <QString>
#include <QStringList>

namespace norvane {

namespace simulator {

struct SimulatorOptions
{
    enum class Action { Run, ShowHelp, ShowVersion, Refused };

    Action action = Action::Run;
    QString refusal; ///< what is wrong, for Action::Refused
    QString help;    ///< for Action::ShowHelp
    QString link;    ///< path of the link to the port; empty: the port is a socket
    QString socket;  ///< path of that socket
    QString log;
    QString control;  ///< path of the control socket; empty: none
    QString incoming; ///< file of control commands for the start; empty: none
    ModemSettings modem;
    LineSettings line;
};

/// Reads a command line.
/// @param arguments  with the program's name first
SimulatorOptions parseOptions(const QStringList &arguments);

} // namespace simulator

} // namespace norvane
