#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace norvane {

/// What a reader of its own makes of an SMS-SUBMIT. It shares neither tables nor code with the
/// encoder, so that each can prove the other wrong.
struct DecodedSubmit
{
    int firstOctet = 0;
    int messageReference = 0;
    QString phone;
    int protocol = 0;
    int coding = 0;
    std::optional<int> validityPeriod;
    std::optional<int> concatenationReference;
    int total = 1;
    int number = 1;
    QString text;
    /// Octets behind the service centre address, for the argument of +CMGS.
    int tpduLength = 0;
};

/// Nothing if the octets are not exactly one well-formed SMS-SUBMIT.
std::optional<DecodedSubmit> decodeSubmit(const QByteArray &hex);

} // namespace norvane
