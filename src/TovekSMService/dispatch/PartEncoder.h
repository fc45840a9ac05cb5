#pragma once

#include "TovekSMService/modem/codec/SubmitPdu.h"
#include "TovekSMService/store/MessageQueue.h"

#include <functional>
#include <optional>

namespace norvane {

/// Encodes messages for the device. A message is encoded once, however many parts it has and
/// however often it is looked at before the last of them has left: what was encoded last is kept.
class PartEncoder
{
public:
    using Encode =
        std::function<Result<QList<SubmitPart>, EncodeError>(const EncodeRequest &request)>;

    enum class Reports { None, Asked };

    explicit PartEncoder(std::optional<quint8> validityPeriod, Encode encode = encodeSubmit,
                         Reports reports = Reports::None);

    /// The parts of `message`, tied together by its reference, or by 0 where it has none yet.
    [[nodiscard]] Result<QList<SubmitPart>, EncodeError> parts(const StoredMessage &message);

private:
    const std::optional<quint8> m_validityPeriod;
    const Encode m_encode;
    const Reports m_reports;
    QString m_phone;
    QString m_text;
    QList<SubmitPart> m_parts; ///< of this phone and text; empty before the first
};

} // namespace norvane
