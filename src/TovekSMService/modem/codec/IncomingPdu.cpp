#include "TovekSMService/modem/codec/IncomingPdu.h"

#include "TovekSMService/modem/codec/GsmAlphabet.h"
#include "TovekSMService/modem/codec/PduCursor.h"
#include "TovekSMService/modem/codec/UserDataHeader.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// First octet of a TPDU, 3GPP TS 23.040, 9.2.3.1 and 9.2.3.23.
constexpr int typeMask = 0x03;
constexpr int deliver = 0x00;
constexpr int statusReport = 0x02;

/// Where notifications of multimedia messages go: the ports of WAP push, plain and secured.
constexpr int pushPort = 2948;
constexpr int securePushPort = 2949;

enum class Coding { Gsm7, Octets, Ucs2 };

struct CodingScheme
{
    Coding coding = Coding::Gsm7;
    std::optional<int> messageClass;
};

Coding codingOf(int alphabetBits)
{
    switch (alphabetBits) {
    case 1:
        return Coding::Octets;
    case 2:
        return Coding::Ucs2;
    default: // 3 is reserved, and read as the default alphabet
        return Coding::Gsm7;
    }
}

/// TP-Data-Coding-Scheme, 3GPP TS 23.038, clause 4. A compressed text is no text that we read.
CodingScheme codingScheme(quint8 octet)
{
    constexpr int compressed = 0x20;
    constexpr int hasClass = 0x10;
    CodingScheme scheme;
    if (octet < 0x80) {
        scheme.coding = (octet & compressed) != 0 ? Coding::Octets : codingOf(octet >> 2 & 0x03);
        if ((octet & hasClass) != 0)
            scheme.messageClass = octet & 0x03;
    } else if (octet >> 4 == 0x0F) {
        scheme.coding = (octet & 0x04) != 0 ? Coding::Octets : Coding::Gsm7;
        scheme.messageClass = octet & 0x03;
    } else if (octet >> 4 == 0x0E) {
        scheme.coding = Coding::Ucs2;
    }
    return scheme;
}

QString ucs2Text(const QByteArray &octets)
{
    QString text;
    text.reserve(octets.size() / 2);
    for (qsizetype i = 0; i + 1 < octets.size(); i += 2)
        text += QChar(static_cast<char16_t>(static_cast<quint8>(octets.at(i)) << 8 |
                                            static_cast<quint8>(octets.at(i + 1))));
    return text;
}

/// TP-User-Data: its header, and behind it the text.
class UserData
{
public:
    /// @param length TP-User-Data-Length, in septets for 7 bits, else in octets
    UserData(const QByteArray &octets, int length, Coding coding, bool hasHeader)
        : m_octets(octets), m_length(length), m_coding(coding)
    {
        if (m_coding != Coding::Gsm7)
            m_octets.truncate(length);
        if (hasHeader)
            takeHeader();
    }

    bool isSound() const { return m_sound; }
    const UserDataHeader &header() const { return m_header; }

    QString text() const
    {
        switch (m_coding) {
        case Coding::Gsm7:
            return septetText();
        case Coding::Ucs2:
            return ucs2Text(m_octets.mid(m_headerOctets));
        case Coding::Octets:
            break;
        }
        return QString::fromLatin1(m_octets.mid(m_headerOctets).toHex().toUpper());
    }

private:
    void takeHeader()
    {
        const int length = m_octets.isEmpty() ? -1 : static_cast<quint8>(m_octets.front());
        if (length < 0 || length + 1 > m_octets.size()) {
            m_sound = false;
            return;
        }
        m_headerOctets = length + 1;
        const auto header = UserDataHeader::parse(QByteArrayView(m_octets).sliced(1, length));
        m_sound = header.has_value();
        m_header = header.value_or(UserDataHeader());
    }

    QString septetText() const
    {
        // The text begins at the septet boundary behind the header.
        const qsizetype headerSeptets = (m_headerOctets * 8 + 6) / 7;
        const QByteArray septets = GsmAlphabet::unpack(m_octets, m_length).mid(headerSeptets);
        return GsmAlphabet::fromSeptets(septets, m_header.locking, m_header.single);
    }

    QByteArray m_octets;
    int m_length;
    Coding m_coding;
    qsizetype m_headerOctets = 0;
    UserDataHeader m_header;
    bool m_sound = true;
};

qsizetype octetsOf(int length, Coding coding)
{
    return coding == Coding::Gsm7 ? (qsizetype{length} * 7 + 7) / 8 : length;
}

} // namespace

Result<DeliverPdu, PduFailure> parseDeliver(const QByteArray &hex)
{
    PduCursor cursor(hex);
    const quint8 first = cursor.octet();
    if ((first & typeMask) != deliver)
        cursor.fail(PduFailure::WrongType);
    DeliverPdu message;
    message.sender = cursor.address();
    cursor.octet(); // TP-Protocol-Identifier
    const CodingScheme scheme = codingScheme(cursor.octet());
    message.messageClass = scheme.messageClass;
    message.sentAt = cursor.timestamp();
    const int length = cursor.octet();
    const UserData data(cursor.octets(octetsOf(length, scheme.coding)), length, scheme.coding,
                        (first & userDataHeaderIndicator) != 0);
    if (!data.isSound())
        cursor.fail(PduFailure::BadHeader);
    if (cursor.failure())
        return failed(*cursor.failure());

    message.concatenation = data.header().concatenation;
    const int port = data.header().port;
    if (port == pushPort || port == securePushPort) {
        message.content = DeliverPdu::Content::PictureNotification;
        return message;
    }
    if (scheme.coding == Coding::Octets)
        message.content = DeliverPdu::Content::Binary;
    message.text = data.text();
    return message;
}

Result<StatusReportPdu, PduFailure> parseStatusReport(const QByteArray &hex)
{
    PduCursor cursor(hex);
    if ((cursor.octet() & typeMask) != statusReport)
        cursor.fail(PduFailure::WrongType);
    StatusReportPdu report;
    report.reference = cursor.octet();
    report.recipient = cursor.address();
    cursor.timestamp(); // when the service centre got the part
    report.at = cursor.timestamp();
    report.status = cursor.octet();
    if (cursor.failure())
        return failed(*cursor.failure());
    return report;
}

std::optional<IncomingKind> kindOf(const QByteArray &hex)
{
    PduCursor cursor(hex);
    const int type = cursor.octet() & typeMask;
    if (cursor.failure())
        return std::nullopt;
    if (type == deliver)
        return IncomingKind::Deliver;
    if (type == statusReport)
        return IncomingKind::StatusReport;
    return std::nullopt;
}

} // namespace norvane
