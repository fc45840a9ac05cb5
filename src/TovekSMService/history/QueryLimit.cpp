#include "TovekSMService/history/QueryLimit.h"

namespace norvane {

using namespace Qt::StringLiterals;

QueryLimit::QueryLimit(const TimeSource &time, const std::atomic<bool> *isCancelled)
    : m_deadline(time), m_isCancelled(isCancelled)
{
    m_deadline.setRemainingTime(maxMs);
}

StoreResult<> QueryLimit::check() const
{
    if (m_isCancelled != nullptr && m_isCancelled->load())
        return failed(StoreFailure(StoreFailure::Kind::Busy, u"the query was cancelled"_s));
    if (m_deadline.hasExpired())
        return failed(StoreFailure(StoreFailure::Kind::Busy, u"the query takes too long"_s));
    return {};
}

} // namespace norvane
