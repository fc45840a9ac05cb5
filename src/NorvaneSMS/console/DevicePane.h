#pragma once

#include "NorvaneSMS/engine/EventTexts.h"

namespace norvane {

class ConsoleControls;

/// The device as the console shows it: in the log of communications, its frame, and a label.
class DevicePane
{
public:
    explicit DevicePane(const ConsoleControls &controls) : m_controls(controls) {}

    void showDetails(const EventTexts::Device &device);
    /// Shows that the device is being tested, before a call that blocks the window.
    void showTesting();
    /// Shows the outcome of a test, an answer behind the details of the device.
    void showTested(bool answered);

private:
    const ConsoleControls &m_controls;
};

} // namespace norvane
