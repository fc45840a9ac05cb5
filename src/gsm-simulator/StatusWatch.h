#pragma once

#include "gsm-simulator/ModemState.h"

#include <QByteArrayList>

#include <array>

namespace norvane {

namespace simulator {

/// What +CIND tells (3GPP TS 27.007, 8.9).
struct Indicator
{
    const char *name;
    int max;
    int (*value)(ModemState &modem);
};

const std::array<Indicator, 7> &indicators();

/// Tells of changes of the registration and of the indicators, as +CREG, +CGREG and +CMER ask for.
class StatusWatch
{
public:
    explicit StatusWatch(ModemState &modem);

    /// The lines about what has changed since the last call.
    QByteArrayList changes(ModemState &modem);

    /// Whether lines about changes are wanted at all.
    static bool isAsked(const ModemState &modem);

private:
    int m_registration;
    std::array<int, 7> m_indicators{};
};

/// The registration as +CREG and +CGREG tell it.
/// @param detail  2: with the cell, where there is one
QByteArray registrationText(const ModemState &modem, int detail);

} // namespace simulator

} // namespace norvane
