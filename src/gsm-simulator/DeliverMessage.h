#pragma once

#include "gsm-simulator/Address.h"
#include "gsm-simulator/GsmAlphabet.h"
#include "gsm-simulator/PduDecoder.h"

#include <QByteArrayList>
#include <QDateTime>

#include <optional>

namespace norvane {

namespace simulator {

/// Application ports of a message (3GPP TS 23.040, 9.2.3.24.3 and .4).
struct Ports
{
    int destination = 0;
    int origin = 0;
    bool isWide = true; ///< of 16 bits rather than 8
};

/// A message that the network has for the modem, of as many parts as its content takes.
struct DeliverMessage
{
    Address sender;
    QDateTime time; ///< with its zone
    int protocol = 0;
    int dataCodingScheme = 0;
    Coding coding = Coding::Gsm7;
    Alphabet alphabet;  ///< of a 7-bit text
    QString text;       ///< of a 7-bit or UCS-2 message
    QByteArray content; ///< of an 8-bit message
    std::optional<Ports> ports;
    int reference = 0; ///< that its parts share
    bool hasWideReference = false;
    std::optional<Concatenation> place; ///< makes it the one part that stands there
};

/// The SMS-DELIVER of each part (3GPP TS 23.040, 9.2.2.1). No part ends within an escape sequence
/// or between the halves of a pair.
/// @return nothing if the alphabet lacks a character, the sender can't be told, or it takes more
/// parts than there may be
std::optional<QByteArrayList> deliverTpdus(const DeliverMessage &message);

} // namespace simulator

} // namespace norvane
