#pragma once

#include "gsm-simulator/TalkingModem.h"

namespace norvane {

namespace simulator {

/// Modems whose clock stands still until it is turned: 9 March 2026, noon, an hour before UTC.
class TurnedClock : public testing::Test
{
protected:
    ModemSettings settings() const
    {
        ModemSettings settings;
        settings.clock = [this] { return m_now; };
        return settings;
    }

    void pass(int milliseconds) { m_now = m_now.addMSecs(milliseconds); }

    QDateTime m_now{QDate(2026, 3, 9), QTime(12, 0), Qt::OffsetFromUTC, 3600};
};

} // namespace simulator

} // namespace norvane
