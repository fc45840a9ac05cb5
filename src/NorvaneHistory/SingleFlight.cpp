#include "NorvaneHistory/SingleFlight.h"

#include <utility>

namespace norvane {

void SingleFlight::start(const Request &request)
{
    if (std::exchange(m_isInFlight, true))
        m_next = request;
    else
        request();
}

void SingleFlight::finish()
{
    m_isInFlight = false;
    if (const Request next = std::exchange(m_next, nullptr))
        start(next);
}

} // namespace norvane
