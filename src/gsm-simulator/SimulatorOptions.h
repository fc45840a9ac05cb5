#pragma once

#include "gsm-simulator/ModemSettings.h"
#include "gsm-simulator/SimulatedModem.h"

#include <QString>
#include <QStringList>

namespace simulator {

struct SimulatorOptions
{
    enum class Wish { Run, ShowHelp, ShowVersion, Refused };

    Wish wish = Wish::Run;
    QString refusal; ///< what is wrong, for Wish::Refused
    QString help;    ///< for Wish::ShowHelp
    QString link;
    QString log;
    ModemSettings modem;
    LineSettings line;
};

/// Reads a command line.
/// @param arguments  with the program's name first
SimulatorOptions parseOptions(const QStringList &arguments);

} // namespace simulator
