#include "TovekSMService/modem/device/ReportRefusals.h"

#include "TovekSMService/log/Categories.h"

#include <algorithm>
#include <array>

namespace norvane {

bool ReportRefusals::mayBeRefusal(const SendFailure &failure)
{
    static constexpr std::array codes = {29, 50, 69};
    return failure.problem == SendProblem::CmsError && !failure.mayBeDelivered &&
           std::find(codes.begin(), codes.end(), failure.number) != codes.end();
}

void ReportRefusals::add(const QString &sim)
{
    if (m_sims.contains(sim))
        return;
    m_sims.insert(sim);
    qCWarning(logDevice) << "the network refuses status reports: this SIM isn't asked for them";
}

} // namespace norvane
