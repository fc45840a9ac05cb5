#include "TovekSMService/store/SharedReportSource.h"

#include "TovekSMService/store/StoreDatabase.h"

namespace norvane {

StoreResult<>
SharedReportSource::outcomes(const QString &since,
                             const std::function<void(const OutcomeRow &)> &take) const
{
    return m_database
        .rows(outcomesSince, {since},
              [&](const StoreRow &row) {
                  take(outcomeOf(row));
                  return 0;
              })
        .map([](const QList<int> &) {});
}

StoreResult<>
SharedReportSource::received(const QString &since,
                             const std::function<void(const ReceivedMessage &)> &take) const
{
    return m_database
        .rows(receivedSince, {since},
              [&](const StoreRow &row) {
                  take(receivedOf(row));
                  return 0;
              })
        .map([](const QList<int> &) {});
}

} // namespace norvane
