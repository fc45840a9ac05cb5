#include "gsm-simulator/DeliverMessage.h"

#include "gsm-simulator/Timestamp.h"

namespace norvane {

namespace simulator {

namespace {

constexpr int maxOctets = 140;
constexpr qsizetype maxParts = 255;

/// A number of one or two octets.
QByteArray number(int value, bool isWide)
{
    QByteArray octets;
    if (isWide)
        octets += static_cast<char>(value >> 8);
    return octets + static_cast<char>(value);
}

QByteArray element(int identifier, const QByteArray &content)
{
    return QByteArray(1, static_cast<char>(identifier)) + static_cast<char>(content.size()) +
           content;
}

/// The elements of a header, without its length.
QByteArray headerOf(const DeliverMessage &message, const std::optional<Concatenation> &place)
{
    enum Identifier { Short = 0x00, ShortPorts = 0x04, LongPorts = 0x05, Long = 0x08 };
    constexpr int singleShift = 0x24;
    constexpr int lockingShift = 0x25;
    QByteArray header;
    if (place) {
        const bool wide = message.hasWideReference;
        header += element(wide ? Long : Short, number(place->reference, wide) +
                                                   static_cast<char>(place->parts) +
                                                   static_cast<char>(place->part));
    }
    if (const auto &ports = message.ports) {
        header += element(ports->isWide ? LongPorts : ShortPorts,
                          number(ports->destination, ports->isWide) +
                              number(ports->origin, ports->isWide));
    }
    if (message.alphabet.single != Language::None)
        header += element(singleShift, number(static_cast<int>(message.alphabet.single), false));
    if (message.alphabet.locking != Language::None)
        header += element(lockingShift, number(static_cast<int>(message.alphabet.locking), false));
    return header;
}

qsizetype headerOctets(const QByteArray &header)
{
    return header.isEmpty() ? 0 : header.size() + 1;
}

/// Septets or octets that fit in behind a header.
qsizetype capacity(const QByteArray &header, Coding coding)
{
    const qsizetype octets = maxOctets - headerOctets(header);
    return coding == Coding::Gsm7 ? octets * 8 / 7 : octets;
}

/// The content in pieces that have to stay whole.
std::optional<QByteArrayList> piecesOf(const DeliverMessage &message)
{
    QByteArrayList pieces;
    if (message.coding == Coding::Octets) {
        for (const char octet : message.content)
            pieces += QByteArray(1, octet);
        return pieces;
    }
    const QString &text = message.text;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (message.coding == Coding::Gsm7) {
            const auto septets = septetsOfText(text.at(i), message.alphabet);
            if (!septets)
                return std::nullopt;
            pieces += *septets;
        } else {
            QByteArray piece = number(text.at(i).unicode(), true);
            if (text.at(i).isHighSurrogate() && i + 1 < text.size() &&
                text.at(i + 1).isLowSurrogate())
                piece += number(text.at(++i).unicode(), true);
            pieces += piece;
        }
    }
    return pieces;
}

/// Joins pieces to parts of `size` at most.
QByteArrayList joined(const QByteArrayList &pieces, qsizetype size)
{
    QByteArrayList parts{QByteArray()};
    for (const QByteArray &piece : pieces) {
        if (parts.constLast().size() + piece.size() > size)
            parts += QByteArray();
        parts.last() += piece;
    }
    return parts;
}

QByteArray userData(const QByteArray &header, const QByteArray &content, Coding coding)
{
    const qsizetype octets = headerOctets(header);
    QByteArray front;
    if (octets > 0)
        front = QByteArray(1, static_cast<char>(header.size())) + header;
    if (coding != Coding::Gsm7)
        return QByteArray(1, static_cast<char>(octets + content.size())) + front + content;
    const qsizetype septets = (octets * 8 + 6) / 7;
    const auto fillBits = static_cast<int>(septets * 7 - octets * 8);
    QByteArray data(1, static_cast<char>(septets + content.size()));
    data += front;
    return data + packSeptets(content, fillBits);
}

} // namespace

std::optional<QByteArrayList> deliverTpdus(const DeliverMessage &message)
{
    constexpr int noMoreMessages = 0x04;
    constexpr int headerIndicator = 0x40;
    const std::optional<QByteArray> sender = addressField(message.sender);
    const std::optional<QByteArrayList> pieces = piecesOf(message);
    if (!sender || !pieces)
        return std::nullopt;
    std::optional<Concatenation> place = message.place;
    QByteArrayList contents = joined(*pieces, capacity(headerOf(message, place), message.coding));
    if (contents.size() > 1 && !place) {
        place = Concatenation{message.reference, 1, 1};
        contents = joined(*pieces, capacity(headerOf(message, place), message.coding));
        place->parts = static_cast<int>(contents.size());
    } else if (contents.size() > 1) {
        return std::nullopt;
    }
    if (contents.size() > maxParts)
        return std::nullopt;
    QByteArrayList tpdus;
    for (const QByteArray &content : contents) {
        const QByteArray header = headerOf(message, place);
        QByteArray tpdu(
            1, static_cast<char>(noMoreMessages | (header.isEmpty() ? 0 : headerIndicator)));
        tpdu += *sender;
        tpdu += static_cast<char>(message.protocol);
        tpdu += static_cast<char>(message.dataCodingScheme);
        tpdu += timestampOctets(message.time);
        tpdus += tpdu + userData(header, content, message.coding);
        if (place)
            ++place->part;
    }
    return tpdus;
}

} // namespace simulator

} // namespace norvane
