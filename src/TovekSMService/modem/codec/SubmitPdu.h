#pragma once

#include "common/Result.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <optional>

namespace norvane {

/// A message to be encoded.
struct EncodeRequest
{
    /// Digits, "*", "#", "a", "b", "c", at most 20 of them, behind an optional leading "+".
    QString phone;
    QString text;
    /// Ties the parts of a long text together; unused for a single part.
    quint16 reference = 0;
    /// TP-VP in its relative form (3GPP TS 23.040, 9.2.3.12.1), absent for the network's own.
    std::optional<quint8> validityPeriod;
    /// Whether the network is asked to report what becomes of each part (TP-SRR, 9.2.3.5).
    bool statusReport = false;
};

/// A message for an owner of devices that encodes it and cuts it by itself.
struct WholeMessage
{
    QString phone;
    QString text;
    int validityMinutes = 0; ///< 0 for the network's own
    int parts = 1;           ///< that our own encoding makes of it
};

/// One SMS-SUBMIT as a device takes it.
struct SubmitPart
{
    /// Service centre address octet (00: the SIM's own) and TPDU, hexadecimal in upper case.
    QByteArray hex;
    /// The argument of +CMGS: octets of the TPDU, without the service centre address.
    int length = 0;
    /// Place of this part, from 1, and how many there are.
    int number = 1;
    int total = 1;
    /// Where the reference that ties the parts together stands in `hex`; -1 for a single part.
    qsizetype referenceAt = -1;
    /// Whether the network is asked to report what becomes of the part.
    bool asksForReport = false;
    /// The message that this stands for as its only part; `hex` is all of our own parts then.
    std::optional<WholeMessage> whole = {};

    /// Parts that the network gets.
    int count() const { return whole ? whole->parts : 1; }
};

enum class EncodeError { EmptyPhone, NumberTooLong, InvalidCharacters, TextTooLong };

/// The engine's code for an encoding failure: -11, -17, -18 or -16.
int errorCode(EncodeError error);

/// Encodes a message as SMS-SUBMIT in PDU mode (3GPP TS 23.040, 9.2.2.2; 27.005, 3.1), cut into
/// concatenated parts where it needs more than one (23.040, 9.2.3.24.8: 16-bit reference).
[[nodiscard]] Result<QList<SubmitPart>, EncodeError> encodeSubmit(const EncodeRequest &request);

/// Takes the request for a status report out of a part.
SubmitPart withoutStatusReport(SubmitPart part);

/// Ties the parts together by another reference; a single part has none.
void setReference(QList<SubmitPart> &parts, quint16 reference);

} // namespace norvane
