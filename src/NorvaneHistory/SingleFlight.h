#pragma once

#include <functional>

namespace norvane {

/// Lets one request of a kind be in flight at a time. Of those that come meanwhile, the last one is
/// made when the answer is there.
class SingleFlight
{
public:
    using Request = std::function<void()>;

    /// Makes the request now or later; finish() must follow its answer.
    void start(const Request &request);
    void finish();

private:
    bool m_isInFlight = false;
    Request m_next;
};

} // namespace norvane
