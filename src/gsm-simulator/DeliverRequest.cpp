#include "gsm-simulator/DeliverRequest.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <initializer_list>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

constexpr int maxByte = 255;
constexpr int maxWideNumber = 65535;

/// Takes members of an object and remembers the first that is wrong.
class Members
{
public:
    explicit Members(const QJsonObject &object) : m_object(object) {}

    const QByteArray &refusal() const { return m_refusal; }

    bool has(QLatin1StringView name) const { return m_object.contains(name); }

    QJsonValue take(QLatin1StringView name)
    {
        m_taken.insert(name);
        return m_object.value(name);
    }

    int number(QLatin1StringView name, int least, int max, int otherwise)
    {
        const QJsonValue value = take(name);
        if (value.isUndefined())
            return otherwise;
        const double given = value.toDouble(least - 1.0);
        if (given < least || given > max || given != std::floor(given)) {
            refuse(name);
            return otherwise;
        }
        return static_cast<int>(given);
    }

    QString text(QLatin1StringView name)
    {
        const QJsonValue value = take(name);
        if (!value.isUndefined() && !value.isString())
            refuse(name);
        return value.toString();
    }

    template <typename Value>
    Value word(QLatin1StringView name,
               std::initializer_list<std::pair<QLatin1StringView, Value>> words, Value otherwise)
    {
        if (!has(name))
            return otherwise;
        const QString given = text(name);
        for (const auto &[word, value] : words) {
            if (word == given)
                return value;
        }
        refuse(name);
        return otherwise;
    }

    void refuse(QLatin1StringView name)
    {
        if (m_refusal.isEmpty())
            m_refusal = "bad value of "_ba + name.data();
    }

    void refuseUnknown()
    {
        for (const QString &name : m_object.keys()) {
            const bool isPlain = std::all_of(name.begin(), name.end(),
                                             [](QChar c) { return c > u' ' && c <= u'~'; });
            if (!m_taken.contains(name) && m_refusal.isEmpty())
                m_refusal = "no such member, or not beside the others: "_ba +
                            (isPlain ? name.left(20).toLatin1() : "?"_ba);
        }
    }

private:
    QJsonObject m_object;
    QSet<QString> m_taken;
    QByteArray m_refusal;
};

bool areDigits(const QString &text)
{
    return !text.isEmpty() && std::all_of(text.begin(), text.end(), [](QChar c) {
        return (c >= u'0' && c <= u'9') || c == u'*' || c == u'#';
    });
}

Address readSender(Members &members)
{
    Address sender;
    sender.text = members.text("from"_L1);
    const bool plus = sender.text.startsWith(u'+');
    const bool isNumber = areDigits(plus ? sender.text.mid(1) : sender.text);
    const int usual = !isNumber ? Address::alphanumericType
                      : plus    ? Address::internationalType
                                : Address::unknownType;
    sender.type = members.word<int>("type"_L1,
                                    {{"international"_L1, Address::internationalType},
                                     {"national"_L1, Address::nationalType},
                                     {"unknown"_L1, Address::unknownType},
                                     {"alphanumeric"_L1, Address::alphanumericType}},
                                    usual);
    // An international number is kept with its "+", and no other has one.
    if (sender.isInternational() && isNumber && !plus)
        sender.text.prepend(u'+');
    const bool fits = sender.isAlphanumeric() || (isNumber && (sender.isInternational() || !plus));
    if (!fits || !addressField(sender))
        members.refuse("from"_L1);
    return sender;
}

Language readLanguage(Members &members, QLatin1StringView name)
{
    return members.word<Language>(
        name, {{"es"_L1, Language::Spanish}, {"pt"_L1, Language::Portuguese}}, Language::None);
}

void readContent(Members &members, DeliverMessage &message)
{
    message.alphabet = {readLanguage(members, "single"_L1), readLanguage(members, "locking"_L1)};
    const bool hasAlphabet = message.alphabet != Alphabet();
    Coding usual = Coding::Octets;
    if (members.has("data"_L1)) {
        const auto octets = octetsOfHexadecimal(members.text("data"_L1).toLatin1());
        if (!octets)
            members.refuse("data"_L1);
        message.content = octets.value_or(QByteArray());
    } else {
        if (!members.has("text"_L1))
            members.refuse("text"_L1);
        message.text = members.text("text"_L1);
        const bool is7Bit = septetsOfText(message.text, message.alphabet).has_value();
        usual = is7Bit || hasAlphabet ? Coding::Gsm7 : Coding::Ucs2;
    }
    message.coding = members.word<Coding>(
        "coding"_L1,
        {{"gsm7"_L1, Coding::Gsm7}, {"ucs2"_L1, Coding::Ucs2}, {"8bit"_L1, Coding::Octets}}, usual);
    if ((message.coding == Coding::Octets) != (usual == Coding::Octets) ||
        (hasAlphabet && message.coding != Coding::Gsm7))
        members.refuse("coding"_L1);
}

void readScheme(Members &members, DeliverMessage &message)
{
    constexpr int hasClass = 0x10;
    const int messageClass = members.number("class"_L1, 0, 3, -1);
    int scheme = message.coding == Coding::Gsm7     ? 0x00
                 : message.coding == Coding::Octets ? 0x04
                                                    : 0x08;
    if (messageClass >= 0)
        scheme |= hasClass | messageClass;
    message.dataCodingScheme = members.number("dcs"_L1, 0, maxByte, scheme);
    if (codingOf(message.dataCodingScheme) != message.coding)
        members.refuse("dcs"_L1);
    message.protocol = members.number("pid"_L1, 0, maxByte, 0);
}

QDateTime readTime(Members &members, const QDateTime &now)
{
    constexpr int quarterOfAnHour = 900;
    constexpr int maxQuarters = 79;
    if (!members.has("time"_L1))
        return now;
    const QDateTime time = QDateTime::fromString(members.text("time"_L1), Qt::ISODate);
    const bool hasZone = time.timeSpec() == Qt::UTC || time.timeSpec() == Qt::OffsetFromUTC;
    const int offset = time.isValid() ? time.offsetFromUtc() : 0;
    if (!time.isValid() || !hasZone || offset % quarterOfAnHour != 0 ||
        std::abs(offset) / quarterOfAnHour > maxQuarters)
        members.refuse("time"_L1);
    return time;
}

void readHeader(Members &members, DeliverMessage &message)
{
    const int referenceBits = members.number("bits"_L1, 8, 16, 8);
    if (referenceBits != 8 && referenceBits != 16)
        members.refuse("bits"_L1);
    message.hasWideReference = referenceBits == 16;
    message.reference =
        members.number("reference"_L1, 0, message.hasWideReference ? maxWideNumber : maxByte, 0);
    if (members.has("part"_L1) || members.has("parts"_L1)) {
        const int parts = members.number("parts"_L1, 1, maxByte, 0);
        const int part = members.number("part"_L1, 1, maxByte, 0);
        if (part < 1 || part > parts)
            members.refuse("part"_L1);
        message.place = Concatenation{message.reference, part, parts};
    }
    if (members.has("port"_L1)) {
        Ports ports;
        const int bits = members.number("portBits"_L1, 8, 16, 16);
        ports.isWide = bits == 16;
        if (bits != 8 && bits != 16)
            members.refuse("portBits"_L1);
        const int max = ports.isWide ? maxWideNumber : maxByte;
        ports.destination = members.number("port"_L1, 0, max, 0);
        ports.origin = members.number("fromPort"_L1, 0, max, 0);
        message.ports = ports;
    }
}

std::vector<int> readOrder(Members &members)
{
    constexpr qsizetype maxDeliveries = 1000;
    std::vector<int> order;
    const QJsonValue value = members.take("order"_L1);
    if (value.isUndefined())
        return order;
    const QJsonArray list = value.toArray();
    if (!value.isArray() || list.isEmpty() || list.size() > maxDeliveries)
        members.refuse("order"_L1);
    for (const QJsonValue &each : list) {
        order.push_back(each.toInt(-1));
        if (order.back() < 1 || order.back() > maxByte)
            members.refuse("order"_L1);
    }
    return order;
}

} // namespace

std::variant<DeliverRequest, ControlFault> readDeliverRequest(const QByteArray &json,
                                                              const QDateTime &now)
{
    constexpr int maxDelayMs = 3'600'000;
    const QJsonDocument document = QJsonDocument::fromJson(json);
    if (!document.isObject())
        return ControlFault{"a JSON object is needed"_ba};
    Members members(document.object());
    DeliverRequest request;
    request.message.sender = readSender(members);
    readContent(members, request.message);
    readScheme(members, request.message);
    request.message.time = readTime(members, now);
    readHeader(members, request.message);
    request.order = readOrder(members);
    request.delay = std::chrono::milliseconds(members.number("delay"_L1, 0, maxDelayMs, 0));
    members.refuseUnknown();
    if (!members.refusal().isEmpty())
        return ControlFault{members.refusal()};
    return request;
}

} // namespace simulator

} // namespace norvane
