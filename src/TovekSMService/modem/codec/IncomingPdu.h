#pragma once

#include "TovekSMService/modem/codec/UserDataHeader.h"
#include "common/Result.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

namespace norvane {

/// Why a PDU can't be read.
enum class PduFailure {
    NotHexadecimal,
    TooShort,  ///< it ends within a field
    WrongType, ///< it is none of what was expected
    BadAddress,
    BadHeader, ///< the header of the user data goes beyond it
};

/// A message that somebody sent to us (SMS-DELIVER, 3GPP TS 23.040, 9.2.2.1).
struct DeliverPdu
{
    enum class Content {
        Text,
        Binary,              ///< `text` is its octets, hexadecimal in upper case
        PictureNotification, ///< of a multimedia message; `text` is empty
    };

    /// "+" and digits, digits, or the letters of a sender that has a name.
    QString sender;
    /// When the service centre got it, with its zone; invalid where it makes no sense.
    QDateTime sentAt;
    Content content = Content::Text;
    /// UTF-16 as it travelled: a surrogate pair may be torn between two parts.
    QString text;
    std::optional<Concatenation> concatenation;
    /// 0 to 3 (3GPP TS 23.038, clause 4).
    std::optional<int> messageClass;
};

/// What became of a part that we sent (SMS-STATUS-REPORT, 3GPP TS 23.040, 9.2.2.3).
struct StatusReportPdu
{
    quint8 reference = 0; ///< TP-MR
    QString recipient;
    QDateTime at;      ///< of delivery or of the last attempt
    quint8 status = 0; ///< TP-ST
};

/// Reads what +CMGR, +CMGL and +CMT give in PDU mode: service centre address and TPDU.
[[nodiscard]] Result<DeliverPdu, PduFailure> parseDeliver(const QByteArray &hex);
/// Reads what +CDS, and +CMGR and +CMGL for a stored report, give in PDU mode.
[[nodiscard]] Result<StatusReportPdu, PduFailure> parseStatusReport(const QByteArray &hex);

/// What a PDU is, by the message type indicator of its TPDU (3GPP TS 23.040, 9.2.3.1), as the
/// service centre sends it; nothing for what it never sends, or for no PDU.
enum class IncomingKind { Deliver, StatusReport };
std::optional<IncomingKind> kindOf(const QByteArray &hex);

} // namespace norvane
