#pragma once

#include "TovekSMService/modem/codec/IncomingPdu.h"
#include "TovekSMService/store/SentParts.h"
#include "TovekSMService/store/StoreFailure.h"
#include "contract/DeliveryState.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace norvane {

class Store;

/// What has become of a message by what the network says now.
struct DeliveryChange
{
    qint64 message = 0;
    DeliveryState state = DeliveryState::Pending;
    QString at; ///< "yyyy-MM-ddTHH:mm:ss", of the network where it tells

    bool operator==(const DeliveryChange &) const = default;
};

/// Finds the parts that status reports are about, and what that makes of their messages.
///
/// A report names the network's reference, which comes again with every 256th part, and the
/// recipient. It belongs to the latest part of the SIM with both of which no final report has come.
class DeliveryReports
{
public:
    /// @param store  must outlive this object
    explicit DeliveryReports(Store &store) : m_store(store) {}

    /// Notes that a part left about which the network will report; nothing for none.
    [[nodiscard]] StoreResult<> keepSent(const std::optional<SentPart> &part);

    /// The same for a message of one part, which has its outcome now.
    [[nodiscard]] StoreResult<> keepOnlySent(qint64 message, const std::optional<SentPart> &part);

    /// The same for the last part of a message that has its outcome now, and puts on that what is
    /// known by then.
    [[nodiscard]] StoreResult<> keepLastSent(qint64 message, const std::optional<SentPart> &part);

    /// Keeps a report and what it says. One that came before changes nothing; one for nothing that
    /// we sent is kept as it is, and logged.
    /// @param pdu  that `report` was read from
    /// @param now  "yyyy-MM-ddTHH:mm:ss"
    /// @return what became of the message, where that is news
    [[nodiscard]] StoreResult<std::optional<DeliveryChange>> take(const QByteArray &pdu,
                                                                  const StatusReportPdu &report,
                                                                  const QString &sim,
                                                                  const QString &now);

    /// Puts on the outcome of a message what its parts say; nothing while it has none.
    [[nodiscard]] StoreResult<std::optional<DeliveryChange>> refresh(qint64 message);

    /// Gives up on messages whose parts left before this moment, `max` at most.
    [[nodiscard]] StoreResult<QList<DeliveryChange>> expire(const QString &before,
                                                            const QString &now, int max);

private:
    StoreResult<std::optional<OpenPart>> partOf(const StatusReportPdu &report,
                                                const QString &sim) const;
    StoreResult<std::optional<DeliveryChange>>
    takeFor(const OpenPart &part, const StatusReportPdu &report, const QString &now);
    StoreResult<std::optional<DeliveryChange>> put(qint64 message, const QList<PartState> &parts);

    Store &m_store;
};

} // namespace norvane
