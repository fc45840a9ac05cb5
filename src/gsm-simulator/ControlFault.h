#pragma once

#include <QByteArray>

namespace norvane {

namespace simulator {

/// Why a control command was refused.
struct ControlFault
{
    QByteArray reason; ///< one line, for whoever wrote the command
};

} // namespace simulator

} // namespace norvane
