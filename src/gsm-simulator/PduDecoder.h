#pragma once

#include "gsm-simulator/Address.h"
#include "gsm-simulator/GsmAlphabet.h"
#include "gsm-simulator/OctetReader.h"
#include "gsm-simulator/PduFault.h"

#include <QByteArray>
#include <QString>

#include <optional>
#include <variant>

namespace norvane {

namespace simulator {

/// Where a part stands in a concatenated message (3GPP TS 23.040, 9.2.3.24.1 and .8).
struct Concatenation
{
    int reference = 0; ///< 0 to 255 or 0 to 65535, by the header's form
    int part = 0;      ///< from 1
    int parts = 0;

    bool operator==(const Concatenation &) const = default;
};

enum class Coding { Gsm7, Octets, Ucs2 };

/// What one SMS-SUBMIT says.
struct SubmittedPart
{
    QString number; ///< with a leading "+" if the address is international
    QString text;   ///< octets of an 8-bit message stand for the characters of the same number
    QByteArray pdu; ///< as it came, in capital hexadecimal digits; empty for a text-mode message
    Coding coding = Coding::Gsm7;
    bool hasHeader = false;
    std::optional<Concatenation> concatenation;
    Alphabet alphabet;                       ///< of a 7-bit text
    int typeOfNumber = Address::unknownType; ///< the type-of-address octet of `number`
    bool reportRequested = false;            ///< the sender wants to know what becomes of it
};

/// The user data of a message: its octets and what is needed to read them.
struct UserData
{
    static constexpr int maxSeptets = 160;
    static constexpr int maxOctets = 140;

    QByteArray octets;
    int length = 0; ///< TP-UDL: septets in the 7-bit alphabet, octets otherwise
    Coding coding = Coding::Gsm7;
    bool hasHeader = false;

    int maxLength() const { return coding == Coding::Gsm7 ? maxSeptets : maxOctets; }
};

/// Reads the user data that a PDU ends with, by the coding that `data` has already.
std::optional<PduFault> readUserData(OctetReader &reader, UserData &data);

/// Reads what AT+CMGS takes in PDU mode: the service centre's address and the SMS-SUBMIT.
/// Nothing is forgiven: lengths have to agree, and nothing may follow the user data.
/// @param hexadecimal  two digits an octet, in either case
/// @param tpduLength   octets without the service centre's address, as AT+CMGS told them
std::variant<SubmittedPart, PduFault> decodeSubmission(const QByteArray &hexadecimal,
                                                       int tpduLength);

/// The octets that a header at the start of user data takes, with its length; 0 if there is none.
/// Nothing if they are more than the data has.
std::optional<int> headerOctetsOf(const UserData &data);

/// Reads user data into text, coding and concatenation of `part`.
/// @return what is wrong with it, or nothing
std::optional<PduFault> decodeUserData(const UserData &data, SubmittedPart &part);

/// The coding that a TP-DCS octet asks for (23.038, 4), or nothing for compressed or reserved ones.
std::optional<Coding> codingOf(int dataCodingScheme);

/// The octets that `digits` stand for, or nothing unless all are hexadecimal and in pairs.
std::optional<QByteArray> octetsOfHexadecimal(const QByteArray &digits);

} // namespace simulator

} // namespace norvane
