#include "TovekSMService/dispatch/PartEncoder.h"

#include <utility>

namespace norvane {

PartEncoder::PartEncoder(std::optional<quint8> validityPeriod, Encode encode, Reports reports)
    : m_validityPeriod(validityPeriod), m_encode(std::move(encode)), m_reports(reports)
{}

Result<QList<SubmitPart>, EncodeError> PartEncoder::parts(const StoredMessage &message)
{
    if (m_parts.isEmpty() || m_phone != message.phone || m_text != message.text) {
        auto result = m_encode(
            {message.phone, message.text, 0, m_validityPeriod, m_reports == Reports::Asked});
        if (!result)
            return result;
        m_phone = message.phone;
        m_text = message.text;
        m_parts = *std::move(result);
    }
    QList<SubmitPart> parts = m_parts;
    setReference(parts, message.reference.value_or(0));
    return parts;
}

} // namespace norvane
