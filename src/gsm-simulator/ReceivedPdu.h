#pragma once

#include "gsm-simulator/Address.h"
#include "gsm-simulator/PduDecoder.h"

#include <QByteArray>

#include <variant>

namespace norvane {

namespace simulator {

/// A TPDU that comes from the network, its fields as a terminal reads them in text mode.
struct ReceivedPdu
{
    enum class Type { Deliver, StatusReport };

    Type type = Type::Deliver;
    int firstOctet = 0;
    Address address;      ///< the sender, or the recipient that a report is about
    QByteArray timestamp; ///< when the service centre got the message

    int protocol = 0;         ///< of a message
    int dataCodingScheme = 0; ///< of a message
    UserData userData;        ///< of a message

    int reference = 0;     ///< of a report
    QByteArray discharged; ///< of a report
    int status = 0;        ///< of a report
};

/// Reads an SMS-DELIVER or SMS-STATUS-REPORT (3GPP TS 23.040, 9.2.2.1 and 9.2.2.3), without a
/// service centre's address. Lengths have to agree as in submissions, but a header may say what it
/// likes: that is the terminal's matter. A report may have optional fields behind its status.
std::variant<ReceivedPdu, PduFault> readReceived(const QByteArray &tpdu);

/// Whom a message is for (23.038, 4): class 0 to 3, or -1 where its coding scheme gives none.
int messageClassOf(int dataCodingScheme);

/// Whether the coding scheme tells of messages that wait elsewhere and wants this one stored.
bool isStoredWaitingIndication(int dataCodingScheme);

} // namespace simulator

} // namespace norvane
