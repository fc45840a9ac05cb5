#pragma once

#include "TovekSMService/modem/at/ModemTypes.h"

#include <QSet>
#include <QString>

namespace norvane {

/// SIMs whose network refuses the request for status reports. Some networks refuse a message for
/// that alone.
class ReportRefusals
{
public:
    /// Whether the failure of a part may mean that the request was refused: facility rejected (29),
    /// requested facility not subscribed (50), requested facility not implemented (69)
    /// (3GPP TS 24.011, 8.2.5.4 table 8.4).
    static bool mayBeRefusal(const SendFailure &failure);

    bool contains(const QString &sim) const { return m_sims.contains(sim); }
    /// Keeps the SIM for as long as the program runs, and logs it once.
    void add(const QString &sim);

private:
    QSet<QString> m_sims;
};

} // namespace norvane
