#include "gsm-simulator/CardFiles.h"

#include "gsm-simulator/Address.h"

#include <optional>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

namespace Status {
constexpr int done = 0x9000;
constexpr int triesLeft = 0x63C0;
constexpr int badLength = 0x6700;
constexpr int notAuthorised = 0x6982;
constexpr int blocked = 0x6983;
constexpr int noSuchFile = 0x6A82;
constexpr int noSuchCode = 0x6A88;
constexpr int badOffset = 0x6B00;
constexpr int lengthIs = 0x6C00;
constexpr int unknownInstruction = 0x6D00;
constexpr int unknownClass = 0x6E00;
} // namespace Status

/// Elementary files (3GPP TS 31.102, 4.2 and ETSI TS 102 221, 13.2).
namespace File {
constexpr int iccid = 0x2FE2;
constexpr int imsi = 0x6F07;
constexpr int administrativeData = 0x6FAD;
} // namespace File

QByteArray filledTo(qsizetype length, QByteArray octets)
{
    return octets.leftJustified(length, '\xFF', true);
}

QByteArray semiOctets(const QByteArray &digits)
{
    return semiOctetsOfDigits(QString::fromLatin1(digits)).value_or(QByteArray());
}

/// The length in octets, then the digits behind a semi-octet that says whether their number is odd.
QByteArray imsiFile(const QByteArray &imsi)
{
    constexpr qsizetype length = 9;
    const QByteArray octets = semiOctets((imsi.size() % 2 == 1 ? "9"_ba : "1"_ba) + imsi);
    return filledTo(length, static_cast<char>(octets.size()) + octets);
}

/// The content of a file, or nothing if the card hasn't got it.
std::optional<QByteArray> contentOf(const ModemState &modem, int file)
{
    constexpr qsizetype iccidLength = 10;
    switch (file) {
    case File::iccid:
        return filledTo(iccidLength, semiOctets(modem.settings.iccid));
    case File::imsi:
        return imsiFile(modem.settings.imsi);
    case File::administrativeData:
        // A normal operation's card, and a network code of two digits.
        return QByteArray("\0\0\0\2", 4);
    default:
        return std::nullopt;
    }
}

int triesStatus(int left)
{
    return left > 0 ? Status::triesLeft + left : Status::blocked;
}

} // namespace

CardAnswer readCardFile(const ModemState &modem, int file, int offset, int length)
{
    const std::optional<QByteArray> content = contentOf(modem, file);
    if (!content)
        return {Status::noSuchFile, {}};
    if (file == File::imsi && modem.sim.state() != SimCard::State::Ready)
        return {Status::notAuthorised, {}};
    const auto rest = static_cast<int>(content->size()) - offset;
    if (rest < 0)
        return {Status::badOffset, {}};
    if (length > rest)
        return {Status::lengthIs + rest, {}};
    return {Status::done, content->mid(offset, length == 0 ? rest : length)};
}

CardAnswer runCardCommand(const ModemState &modem, const QByteArray &command)
{
    constexpr qsizetype headerLength = 5;
    constexpr int verifyPin = 0x20;
    constexpr int unblockPin = 0x2C;
    constexpr char applicationPin = 0x01;
    if (command.size() < headerLength)
        return {Status::badLength, {}};
    if (command.at(0) != 0)
        return {Status::unknownClass, {}};
    const int instruction = static_cast<unsigned char>(command.at(1));
    if (instruction != verifyPin && instruction != unblockPin)
        return {Status::unknownInstruction, {}};
    if (command.at(3) != applicationPin)
        return {Status::noSuchCode, {}};
    if (command.size() != headerLength || command.at(4) != 0)
        return {Status::badLength, {}};
    return {
        triesStatus(instruction == verifyPin ? modem.sim.pinTriesLeft() : modem.sim.pukTriesLeft()),
        {}};
}

} // namespace simulator

} // namespace norvane
