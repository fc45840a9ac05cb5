#include "TovekSMService/modem/codec/IncomingPdu.h"
#include "gsm-simulator/ReceivedPdu.h"
#include "gsm-simulator/Timestamp.h"

#include "fuzz/FuzzTarget.h"

#include <cstdlib>

namespace norvane {

// Any text as a PDU of the network: a message, a report or a failure, within bounds. What the
// simulated modem's own reader takes is read too, and the same is read from it.

namespace {

constexpr qsizetype maxSender = 21; // "+" and 20 digits

void checkMessage(const DeliverPdu &message, qsizetype octets)
{
    expectThat(message.sender.size() <= maxSender, "a sender has a length");
    if (const std::optional<Concatenation> &place = message.concatenation) {
        expectThat(place->number >= 1 && place->number <= place->total && place->total <= 255,
                   "a part has its place");
        expectThat(place->wide || place->reference <= 255, "a short reference is an octet");
    }
    expectThat(message.messageClass.value_or(0) >= 0 && message.messageClass.value_or(0) <= 3,
               "a class is 0 to 3");
    switch (message.content) {
    case DeliverPdu::Content::Text:
        expectThat(message.text.size() <= octets * 8 / 7, "a text fits into its octets");
        break;
    case DeliverPdu::Content::Binary:
        expectThat(message.text.size() % 2 == 0 && message.text.size() <= octets * 2,
                   "octets are shown by two digits each");
        break;
    case DeliverPdu::Content::PictureNotification:
        expectThat(message.text.isEmpty(), "a notification has no text");
    }
}

/// A moment as the other reader has it, octets; it takes days that a month doesn't have.
void compareMoments(const QDateTime &moment, QByteArray octets)
{
    constexpr char zoneSign = 0x08;
    constexpr int shortestMonth = 28;
    constexpr int maxZone = 79 * 15 * 60; // seconds
    if (!moment.isValid()) {
        expectThat(simulator::swappedDecimal(octets.at(2)) > shortestMonth,
                   "a moment of the calendar is read");
        return;
    }
    expectThat(std::abs(moment.offsetFromUtc()) <= maxZone, "a zone is within its digits");
    if (octets.back() == zoneSign)
        octets.back() = 0; // a zone of minus nothing
    expectThat(simulator::timestampOctets(moment) == octets, "both readers read the same moment");
}

void compareTexts(const DeliverPdu &message, const simulator::SubmittedPart &part)
{
    using Content = DeliverPdu::Content;
    expectThat(message.text.size() <= 280, "a text fits into 140 octets");
    const auto &place = part.concatenation;
    expectThat(message.concatenation.has_value() == place.has_value(), "both see a long message");
    if (place) {
        expectThat(message.concatenation->reference == place->reference &&
                       message.concatenation->number == place->part &&
                       message.concatenation->total == place->parts,
                   "both read the same place");
    }
    if (message.content == Content::PictureNotification)
        return;
    expectThat((message.content == Content::Binary) == (part.coding == simulator::Coding::Octets),
               "both tell octets from text");
    const QString text = message.content == Content::Binary
                             ? QString::fromLatin1(part.text.toLatin1().toHex().toUpper())
                             : part.text;
    expectThat(message.text == text, "both readers read the same text");
}

void compareMessage(const QByteArray &hex, const simulator::ReceivedPdu &other)
{
    expectThat(kindOf(hex) == IncomingKind::Deliver, "both know a message");
    simulator::SubmittedPart part;
    const bool isRead = !simulator::decodeUserData(other.userData, part);
    const Result<DeliverPdu, PduFailure> message = parseDeliver(hex);
    if (!message) {
        // The other reader leaves the elements of a header to whoever shows the message.
        expectThat(!isRead && message.error() == PduFailure::BadHeader, "both take the message");
        return;
    }
    expectThat(message->sender == other.address.text, "both readers read the same sender");
    compareMoments(message->sentAt, other.timestamp);
    expectThat(message->messageClass.value_or(-1) ==
                   simulator::messageClassOf(other.dataCodingScheme),
               "both readers read the same class");
    if (isRead)
        compareTexts(*message, part);
}

void compareReport(const QByteArray &hex, const simulator::ReceivedPdu &other)
{
    expectThat(kindOf(hex) == IncomingKind::StatusReport, "both know a report");
    const Result<StatusReportPdu, PduFailure> report = parseStatusReport(hex);
    expectThat(report.has_value(), "both take the report");
    expectThat(report->reference == other.reference, "both readers read the same reference");
    expectThat(report->status == other.status, "both readers read the same status");
    expectThat(report->recipient == other.address.text, "both readers read the same recipient");
    compareMoments(report->at, other.discharged);
}

void compare(const QByteArray &octets)
{
    if (octets.isEmpty() || static_cast<quint8>(octets.front()) >= octets.size())
        return;
    const QByteArray tpdu = octets.mid(1 + static_cast<quint8>(octets.front()));
    const auto read = simulator::readReceived(tpdu);
    const auto *other = std::get_if<simulator::ReceivedPdu>(&read);
    if (other == nullptr)
        return;
    if (other->type == simulator::ReceivedPdu::Type::Deliver)
        compareMessage(octets.toHex(), *other);
    else
        compareReport(octets.toHex(), *other);
}

void read(const QByteArray &hex)
{
    const std::optional<IncomingKind> kind = kindOf(hex);
    if (const auto message = parseDeliver(hex)) {
        expectThat(kind == IncomingKind::Deliver, "a message is known as one");
        checkMessage(*message, hex.size() / 2);
        const auto small = parseDeliver(hex.toLower());
        expectThat(small && small->text == message->text, "digits may be small");
    }
    if (const auto report = parseStatusReport(hex)) {
        expectThat(kind == IncomingKind::StatusReport, "a report is known as one");
        expectThat(report->recipient.size() <= maxSender, "a recipient has a length");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    const bool isText = input.takeByte() % 4 == 0;
    const QByteArray rest = input.takeRest();
    read(isText ? rest : rest.toHex());
    compare(isText ? QByteArray::fromHex(rest) : rest);
    return 0;
}

} // namespace norvane
