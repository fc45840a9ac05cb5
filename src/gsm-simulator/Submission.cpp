#include "gsm-simulator/Submission.h"

#include "gsm-simulator/GsmAlphabet.h"
#include "gsm-simulator/ModemState.h"
#include "gsm-simulator/TextCoding.h"

namespace norvane {

namespace simulator {

namespace {

constexpr int headerIndicator = 0x40;
constexpr int reportRequest = 0x20;
constexpr int maxSeptets = 160;

/// How many septets lie in packed octets. Seven octets hold eight septets, or seven and their fill.
int septetsIn(const QByteArray &octets)
{
    const auto all = static_cast<int>(octets.size() * 8 / 7);
    const bool filled = !octets.isEmpty() && octets.size() % 7 == 0 &&
                        (static_cast<unsigned char>(octets.back()) >> 1U) == 0;
    return filled ? all - 1 : all;
}

/// 8-bit and UCS-2 messages, and all that carry a header, come as hexadecimal digits.
std::optional<SubmittedPart> readOctets(const QByteArray &entry, const UserData &form)
{
    const std::optional<QByteArray> octets = octetsOfHexadecimal(entry);
    if (!octets)
        return std::nullopt;
    UserData data = form;
    data.octets = *octets;
    data.length =
        data.coding == Coding::Gsm7 ? septetsIn(*octets) : static_cast<int>(octets->size());
    SubmittedPart part;
    if (decodeUserData(data, part))
        return std::nullopt;
    return part;
}

} // namespace

std::optional<SubmittedPart> readTextSubmission(const Address &number, const QByteArray &entry,
                                                const Profile &profile)
{
    const std::optional<Coding> coding = codingOf(profile.dataCodingScheme);
    if (!coding)
        return std::nullopt;
    const bool hasHeader = (profile.firstOctet & headerIndicator) != 0;
    std::optional<SubmittedPart> part;
    if (*coding != Coding::Gsm7 || hasHeader) {
        part = readOctets(entry, {{}, 0, *coding, hasHeader});
    } else {
        const std::optional<QString> text = fromCharacterSet(entry, profile.characterSet);
        const std::optional<int> septets = text ? septetsNeeded(*text) : std::nullopt;
        if (septets && *septets <= maxSeptets) {
            part.emplace();
            part->text = *text;
        }
    }
    if (part) {
        part->number = number.text;
        part->typeOfNumber = number.type;
        part->reportRequested = (profile.firstOctet & reportRequest) != 0;
    }
    return part;
}

} // namespace simulator

} // namespace norvane
