#include "TovekSMService/reports/Inbox.h"

#include "TovekSMService/store/Store.h"
#include "fuzz/FuzzTarget.h"

#include <QSet>

#include <algorithm>
#include <tuple>

namespace norvane {

using namespace Qt::StringLiterals;

// Parts of a few senders, references and counts in any order, doubled and missing, into the inbox:
// it shows what a plain list of them shows, no message twice and none before it is whole.

namespace {

constexpr int maxSteps = 64;

QString momentOf(int minute)
{
    return u"2026-11-22T%1:%2:00"_s.arg(minute / 60, 2, 10, QChar(u'0'))
        .arg(minute % 60, 2, 10, QChar(u'0'));
}

/// What the device gives: the three bytes that it is made of are its PDU.
struct Given
{
    QByteArray pdu;
    QString sim;
    std::optional<DeliverPdu> message; ///< nothing for a PDU that can't be read
};

Given takeGiven(FuzzInput &input)
{
    static const QString sims[] = {u"sim"_s, QString()};
    static const QString senders[] = {u"+34612345678"_s, u"612345678"_s, u"Norvane"_s, QString()};
    static const QString texts[] = {u"a"_s,
                                    u"hello"_s,
                                    QString(),
                                    u"\U0001F600"_s,
                                    QString(QChar(0xD83D)),
                                    QString(QChar(0xDE00)),
                                    QString(QChar(0xFEFF)),
                                    QString(QChar(u'\0'))};
    const int form = input.takeByte();
    const int place = input.takeByte();
    const int content = input.takeByte();
    Given given;
    given.pdu.append(static_cast<char>(form)).append(static_cast<char>(place));
    given.pdu = given.pdu.append(static_cast<char>(content)).toHex();
    given.sim = sims[(form & 0x80) != 0 ? 1 : 0];
    if ((content & 0x80) != 0)
        given.pdu = given.pdu.toUpper();
    if ((form & 0x70) == 0x70)
        return given;
    DeliverPdu message;
    message.sender = senders[form % 4];
    message.text = texts[content % 8];
    if ((content & 0x70) == 0x70) {
        message.content = DeliverPdu::Content::PictureNotification;
        message.text.clear();
    }
    if ((form & 0x04) == 0) {
        const int total = 1 + place % 4;
        message.concatenation = Concatenation{static_cast<quint16>(place >> 6 & 1), place >> 7 != 0,
                                              total, 1 + (place >> 2) % total};
    }
    given.message = message;
    return given;
}

/// A part as the list keeps it.
struct Part
{
    std::tuple<QString, QString, int, bool, int> group; ///< the last is how many parts there are
    int number = 1;
    QString text;
    int minute = 0;

    int total() const { return std::get<4>(group); }
};

Part partOf(const Given &given, int minute)
{
    Part part;
    part.minute = minute;
    if (!given.message) {
        part.group = {given.sim, QString(), 0, false, 1};
        part.text = QString::fromLatin1(given.pdu);
        return part;
    }
    const DeliverPdu &message = *given.message;
    const Concatenation place = message.concatenation.value_or(Concatenation());
    part.group = {given.sim, message.sender, place.reference, place.wide, place.total};
    part.number = place.number;
    part.text = message.text;
    if (message.content == DeliverPdu::Content::PictureNotification && place.number == 1)
        part.text = u"MMS"_s;
    return part;
}

/// What an inbox does, with lists.
class PlainInbox
{
public:
    /// @return the text of the message that is shown then, if any
    std::optional<QString> take(const Given &given, int minute)
    {
        const auto key = std::make_pair(given.sim, given.pdu.toUpper());
        if (m_known.contains(key))
            return std::nullopt;
        m_known.insert(key);
        const Part part = partOf(given, minute);
        m_waiting.append(part);
        if (part.total() > 1) {
            QSet<int> numbers;
            for (const Part &each : std::as_const(m_waiting))
                if (each.group == part.group)
                    numbers.insert(each.number);
            if (numbers.size() < part.total())
                return std::nullopt;
        }
        return show(part);
    }

    std::optional<QString> showIncomplete(int before)
    {
        const auto found =
            std::find_if(m_waiting.begin(), m_waiting.end(),
                         [before](const Part &part) { return part.minute < before; });
        return found == m_waiting.end() ? std::nullopt : std::optional(show(Part(*found)));
    }

    const QStringList &shown() const { return m_shown; }

private:
    QString show(const Part &part)
    {
        QStringList pieces(part.total());
        // Of a part that came twice with other words, the last counts, and the others wait.
        for (const Part &each : std::as_const(m_waiting))
            if (each.group == part.group)
                pieces[each.number - 1] = u"+"_s + each.text;
        m_waiting.removeIf([&](const Part &each) {
            return each.group == part.group && pieces.at(each.number - 1) == u"+"_s + each.text;
        });
        QString text;
        for (qsizetype i = 0; i < pieces.size(); ++i) {
            if (!pieces.at(i).isEmpty())
                text += pieces.at(i).mid(1);
            else if (i == 0 || !pieces.at(i - 1).isEmpty())
                text += u"[...]"_s;
        }
        QString shown;
        for (const uint character : text.toUcs4()) // halves of pairs are replaced
            shown += QChar::fromUcs4(character);
        m_shown.prepend(shown);
        return m_shown.constFirst();
    }

    QSet<std::pair<QString, QByteArray>> m_known;
    QList<Part> m_waiting;
    QStringList m_shown; ///< the latest first
};

template <typename Value>
Value valueOf(const StoreResult<Value> &result)
{
    expectThat(result.has_value(), "the store does what it is asked");
    return *result;
}

/// Open from its construction on, so that the database library outlives it.
class OpenStore : public Store
{
public:
    OpenStore() : Store(fuzzFolder() + u"/queue.sqlite"_s)
    {
        expectThat(open().has_value(), "a store can be opened");
    }
};

class Comparison
{
public:
    explicit Comparison(Store &store) : m_store(store), m_inbox(store) {}

    void step(FuzzInput &input)
    {
        ++m_minute;
        if (const int what = input.takeByte(); what % 16 == 15) {
            showIncomplete(m_minute - (what >> 4));
            return;
        }
        const Given given = takeGiven(input);
        compare(valueOf(m_inbox.take(given.pdu, given.message, given.sim, momentOf(m_minute))),
                m_plain.take(given, m_minute), given.message ? given.message->sender : QString());
        if (m_plain.shown().size() > maxSteps)
            expectThat(false, "a part makes one message at most");
    }

    void end()
    {
        while (showIncomplete(++m_minute))
            expectThat(m_minute < 3 * maxSteps, "what waits comes to an end");
        expectThat(valueOf(m_store.received().waitingSince(momentOf(m_minute), 1)).isEmpty(),
                   "nothing waits when everything was shown");
        QStringList texts;
        for (const ReceivedMessage &message : valueOf(m_store.received().list({}, 0, 2 * maxSteps)))
            texts.append(message.text);
        expectThat(texts == m_plain.shown(), "what was shown is kept, once and in its order");
        expectThat(valueOf(m_store.received().unread()) == texts.size(), "nothing is read yet");
    }

private:
    bool showIncomplete(int before)
    {
        const auto shown =
            valueOf(m_inbox.showIncomplete(momentOf(std::max(before, 0)), momentOf(m_minute)));
        compare(shown, m_plain.showIncomplete(before), shown ? shown->phone : QString());
        return shown.has_value();
    }

    void compare(const std::optional<ReceivedMessage> &shown, const std::optional<QString> &text,
                 const QString &sender) const
    {
        expectThat(shown.has_value() || !text, "a message that is whole is shown");
        expectThat(!shown || text, "no message is shown twice or before it is whole");
        if (!shown)
            return;
        expectThat(shown->text == *text, "the parts stand in their order");
        expectThat(shown->phone == sender, "a message has its sender");
        expectThat(shown->at == momentOf(m_minute) && !shown->isRead, "a message is new");
    }

    Store &m_store;
    Inbox m_inbox;
    PlainInbox m_plain;
    int m_minute = 0;
};

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    static OpenStore store;
    FuzzInput input(data, size);
    // Everything is taken back at the end: nothing has to reach the disk.
    const StoreResult<> ended = store.database().together([&]() -> StoreResult<> {
        Comparison comparison(store);
        for (int steps = 0; steps < maxSteps && !input.atEnd(); ++steps)
            comparison.step(input);
        comparison.end();
        return failed(StoreFailure(StoreFailure::Kind::Other, u"taken back"_s));
    });
    expectThat(!ended && ended.error().text() == "taken back"_L1, "an input is taken back");
    return 0;
}

} // namespace norvane
