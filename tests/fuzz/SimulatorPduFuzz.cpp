#include "gsm-simulator/PduDecoder.h"

#include "TovekSMService/modem/codec/SubmitDecoder.h"
#include "fuzz/FuzzTarget.h"

namespace norvane {

// Any octets as a submission: a part or a fault. Where the other decoder can read them too, it
// reads the same.

namespace {

/// Whether the other decoder was made for such a submission: no service centre, a validity of the
/// relative form or none, an ordinary number, 7-bit letters or UCS-2.
bool isOrdinary(const QByteArray &octets)
{
    constexpr int fixed = 7;
    if (octets.size() < fixed || octets.at(0) != 0 || (octets.at(1) & 0x08) != 0)
        return false;
    const auto digits = static_cast<quint8>(octets.at(3));
    const auto type = static_cast<quint8>(octets.at(4));
    const qsizetype coding = 5 + (digits + 1) / 2 + 1;
    return (type == 0x81 || type == 0x91) && coding < octets.size() &&
           (octets.at(coding) == 0 || octets.at(coding) == 8);
}

void compare(const simulator::SubmittedPart &part, const QByteArray &octets)
{
    if (!isOrdinary(octets))
        return;
    const std::optional<DecodedSubmit> other = decodeSubmit(octets.toHex().toUpper());
    expectThat(other.has_value() || part.hasHeader, "both decoders take an ordinary submission");
    if (!other)
        return; // a header with elements that the other decoder doesn't know
    expectThat(other->phone == part.number, "both decoders read the same number");
    // A lone escape is shown differently by the two; this system sends none.
    const bool escapes = other->text.contains(QChar(0xFFFD)) || part.text.contains(QChar(0xA0)) ||
                         part.text.endsWith(u' ') || other->text.contains(QChar(0x1B));
    expectThat(escapes || other->text == part.text, "both decoders read the same text");
}

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    const int form = input.takeByte();
    const int told = input.takeByte();
    const QByteArray octets = input.takeRest();
    if (form % 8 == 0) {
        simulator::decodeSubmission(octets, told); // digits and whatever isn't one
        return 0;
    }
    const int centre = octets.isEmpty() ? 0 : static_cast<quint8>(octets.front());
    const int length = form % 8 == 1 ? told : static_cast<int>(octets.size()) - 1 - centre;
    const auto result = simulator::decodeSubmission(octets.toHex(), length);
    if (const auto *part = std::get_if<simulator::SubmittedPart>(&result)) {
        expectThat(part->text.size() <= 160, "a part has 160 characters at most");
        expectThat(!part->number.isEmpty() && part->number.size() <= 21, "a number has a length");
        expectThat(part->pdu == octets.toHex().toUpper(), "a part keeps what came");
        const auto &tied = part->concatenation;
        expectThat(!tied || (tied->part >= 1 && tied->part <= tied->parts), "a part has its place");
        compare(*part, octets);
    }
    return 0;
}

} // namespace norvane
