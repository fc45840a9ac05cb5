#include "TovekSMService/modem/codec/UserDataHeader.h"

namespace norvane {

namespace {

/// Information element identifiers, 3GPP TS 23.040, 9.2.3.24.
enum Element : quint8 {
    ShortReference = 0x00,
    ShortPorts = 0x04,
    LongPorts = 0x05,
    LongReference = 0x08,
    SingleShift = 0x24,
    LockingShift = 0x25,
};

quint8 octet(QByteArrayView data, qsizetype index)
{
    return static_cast<quint8>(data.at(index));
}

quint16 twoOctets(QByteArrayView data)
{
    return static_cast<quint16>(octet(data, 0) << 8 | octet(data, 1));
}

GsmLanguage languageOf(quint8 identifier)
{
    const auto language = static_cast<GsmLanguage>(identifier);
    const bool known = language == GsmLanguage::Spanish || language == GsmLanguage::Portuguese;
    return known ? language : GsmLanguage::Default;
}

void takeConcatenation(UserDataHeader &header, QByteArrayView data, bool wide)
{
    const qsizetype behind = wide ? 2 : 1;
    const Concatenation found{wide ? twoOctets(data) : quint16{octet(data, 0)}, wide,
                              octet(data, behind), octet(data, behind + 1)};
    if (found.total > 0 && found.number > 0 && found.number <= found.total)
        header.concatenation = found;
}

void take(UserDataHeader &header, quint8 identifier, QByteArrayView data)
{
    const qsizetype length = data.size();
    if (identifier == ShortReference && length == 3)
        takeConcatenation(header, data, false);
    else if (identifier == LongReference && length == 4)
        takeConcatenation(header, data, true);
    else if (identifier == ShortPorts && length == 2)
        header.port = octet(data, 0);
    else if (identifier == LongPorts && length == 4)
        header.port = twoOctets(data);
    else if (identifier == SingleShift && length == 1)
        header.single = languageOf(octet(data, 0));
    else if (identifier == LockingShift && length == 1)
        header.locking = languageOf(octet(data, 0));
}

} // namespace

std::optional<UserDataHeader> UserDataHeader::parse(QByteArrayView elements)
{
    UserDataHeader header;
    while (!elements.isEmpty()) {
        if (elements.size() < 2 || elements.size() < 2 + octet(elements, 1))
            return std::nullopt;
        const quint8 length = octet(elements, 1);
        take(header, octet(elements, 0), elements.sliced(2, length));
        elements = elements.sliced(2 + length);
    }
    return header;
}

} // namespace norvane
