#include "TovekSMService/modem/codec/SubmitDecoder.h"

#include <QHash>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Reads octets from the front and remembers if there were too few.
class Octets
{
public:
    explicit Octets(const QByteArray &bytes) : m_bytes(bytes) {}

    int take()
    {
        if (m_position >= m_bytes.size()) {
            m_short = true;
            return 0;
        }
        return static_cast<quint8>(m_bytes.at(m_position++));
    }

    QByteArray take(int count)
    {
        QByteArray result;
        for (int i = 0; i < count; ++i)
            result.append(static_cast<char>(take()));
        return result;
    }

    bool endedExactly() const { return !m_short && m_position == m_bytes.size(); }
    qsizetype left() const { return m_bytes.size() - m_position; }

private:
    QByteArray m_bytes;
    qsizetype m_position = 0;
    bool m_short = false;
};

/// The 7-bit alphabet written out in its order, one line a column of the standard's table.
QString alphabet()
{
    return QString::fromUtf8("@£$¥èéùìòÇ\nØø\rÅå"
                             "Δ_ΦΓΛΩΠΨΣΘΞ\x1b"
                             "ÆæßÉ"
                             " !\"#¤%&'()*+,-./"
                             "0123456789:;<=>?"
                             "¡ABCDEFGHIJKLMNO"
                             "PQRSTUVWXYZÄÖÑÜ§"
                             "¿abcdefghijklmno"
                             "pqrstuvwxyzäöñüà");
}

QString fromSeptets(const QList<int> &septets)
{
    static const QString letters = alphabet();
    static const QHash<int, QString> escaped = {
        {10, u"\f"_s}, {20, u"^"_s}, {40, u"{"_s}, {41, u"}"_s}, {47, u"\\"_s},
        {60, u"["_s},  {61, u"~"_s}, {62, u"]"_s}, {64, u"|"_s}, {101, QString::fromUtf8("€")}};
    QString text;
    for (qsizetype i = 0; i < septets.size(); ++i) {
        if (septets.at(i) == 27 && i + 1 < septets.size())
            text += escaped.value(septets.at(++i), u"\uFFFD"_s);
        else
            text += letters.at(septets.at(i));
    }
    return text;
}

/// Bit by bit, from the bit `first` on.
QList<int> septetsFrom(const QByteArray &octets, int first, int count)
{
    QList<int> septets;
    for (int i = 0; i < count; ++i) {
        int septet = 0;
        for (int bit = 0; bit < 7; ++bit) {
            const int at = first + i * 7 + bit;
            const int octet = static_cast<quint8>(octets.at(at / 8));
            septet |= (octet >> (at % 8) & 1) << bit;
        }
        septets.append(septet);
    }
    return septets;
}

QString readPhone(Octets &octets)
{
    static const QString digits = u"0123456789*#abc"_s;
    const int length = octets.take();
    const int type = octets.take();
    QString phone = type == 0x91 ? u"+"_s : QString();
    const QByteArray semiOctets = octets.take((length + 1) / 2);
    for (int i = 0; i < length; ++i) {
        const int octet = static_cast<quint8>(semiOctets.at(i / 2));
        phone += digits.mid(i % 2 == 0 ? octet & 15 : octet >> 4, 1);
    }
    return phone;
}

bool readHeader(const QByteArray &header, DecodedSubmit &result)
{
    Octets octets(header);
    while (octets.left() > 0) {
        const int kind = octets.take();
        Octets value(octets.take(octets.take()));
        if (kind == 8) {
            const int high = value.take();
            result.concatenationReference = high * 256 + value.take();
            result.total = value.take();
            result.number = value.take();
        }
        if (!value.endedExactly())
            return false;
    }
    return octets.endedExactly();
}

} // namespace

std::optional<DecodedSubmit> decodeSubmit(const QByteArray &hex)
{
    const QByteArray bytes = QByteArray::fromHex(hex);
    if (bytes.toHex().toUpper() != hex)
        return std::nullopt;
    Octets octets(bytes);
    octets.take(octets.take()); // service centre address

    DecodedSubmit result;
    result.tpduLength = static_cast<int>(octets.left());
    result.firstOctet = octets.take();
    if ((result.firstOctet & 3) != 1)
        return std::nullopt;
    result.messageReference = octets.take();
    result.phone = readPhone(octets);
    result.protocol = octets.take();
    result.coding = octets.take();
    if ((result.firstOctet & 0x18) == 0x10)
        result.validityPeriod = octets.take();

    const int length = octets.take();
    const QByteArray data = octets.take(static_cast<int>(octets.left()));
    if (data.size() > 140)
        return std::nullopt;
    int headerOctets = 0;
    if ((result.firstOctet & 0x40) != 0 && !data.isEmpty()) {
        headerOctets = static_cast<quint8>(data.at(0)) + 1;
        if (!readHeader(data.mid(1, headerOctets - 1), result))
            return std::nullopt;
    }
    if (result.coding == 0) {
        if ((length * 7 + 7) / 8 != data.size())
            return std::nullopt;
        const int skipped = (headerOctets * 8 + 6) / 7;
        result.text = fromSeptets(septetsFrom(data, skipped * 7, length - skipped));
    } else {
        if (length != data.size())
            return std::nullopt;
        for (qsizetype i = headerOctets; i + 1 < data.size(); i += 2)
            result.text += QChar(static_cast<char16_t>(static_cast<quint8>(data.at(i)) * 256 +
                                                       static_cast<quint8>(data.at(i + 1))));
    }
    return octets.endedExactly() ? std::optional(result) : std::nullopt;
}

} // namespace norvane
