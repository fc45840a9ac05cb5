#include "TovekSMService/reports/Inbox.h"

#include "TovekSMService/reports/PduDigest.h"
#include "TovekSMService/store/Store.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A surrogate without its partner is no character.
QString wellFormed(QString text)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        const bool isPair =
            text.at(i).isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (isPair)
            ++i;
        else if (text.at(i).isSurrogate())
            text[i] = QChar::ReplacementCharacter;
    }
    return text;
}

/// Of a notification, which may have several parts, the first one is shown as the word.
QString textOf(const DeliverPdu &message, int number)
{
    if (message.content != DeliverPdu::Content::PictureNotification)
        return message.text;
    return number == 1 ? Inbox::pictureWord.toString() : QString();
}

ReceivedPart partOf(const QByteArray &pdu, const std::optional<DeliverPdu> &message,
                    const QString &sim)
{
    ReceivedPart part;
    part.group.sim = sim;
    if (!message) {
        part.text = QString::fromLatin1(pdu);
        return part;
    }
    part.group.phone = message->sender;
    if (const std::optional<Concatenation> &whole = message->concatenation) {
        part.group.reference = whole->reference;
        part.group.isWide = whole->wide;
        part.group.total = whole->total;
        part.number = whole->number;
    }
    part.sentAt = message->sentAt.isValid() ? message->sentAt.toString(Qt::ISODate) : QString();
    part.text = textOf(*message, part.number);
    return part;
}

/// The latest of the parts with that number: an older one was left behind by another message of the
/// same reference.
const ReceivedPart *partWith(const QList<ReceivedPart> &parts, int number)
{
    const auto found = std::find_if(parts.rbegin(), parts.rend(),
                                    [number](const auto &part) { return part.number == number; });
    return found == parts.rend() ? nullptr : &*found;
}

bool isWhole(const QList<ReceivedPart> &parts)
{
    for (int number = 1; number <= parts.constFirst().group.total; ++number)
        if (partWith(parts, number) == nullptr)
            return false;
    return true;
}

QString joined(const QList<ReceivedPart> &parts)
{
    const int total = parts.constFirst().group.total;
    QString text;
    bool isGap = false;
    for (int number = 1; number <= total; ++number) {
        const ReceivedPart *const part = partWith(parts, number);
        if (part == nullptr && !isGap)
            text += Inbox::missingPart;
        else if (part != nullptr)
            text += part->text;
        isGap = part == nullptr;
    }
    return wellFormed(text);
}

} // namespace

StoreResult<std::optional<ReceivedMessage>> Inbox::take(const QByteArray &pdu,
                                                        const std::optional<DeliverPdu> &message,
                                                        const QString &sim, const QString &now)
{
    using Message = std::optional<ReceivedMessage>;
    return m_store.database().together([&]() -> StoreResult<Message> {
        ReceivedPart part = partOf(pdu, message, sim);
        return m_store.received()
            .addPart(pduDigest(pdu, sim), part, now)
            .and_then([&](std::optional<qint64> id) -> StoreResult<Message> {
                if (!id)
                    return Message();
                part.id = *id;
                return complete(part, now);
            });
    });
}

StoreResult<std::optional<ReceivedMessage>> Inbox::complete(const ReceivedPart &part,
                                                            const QString &now)
{
    using Message = std::optional<ReceivedMessage>;
    const auto shown = [](const ReceivedMessage &message) { return Message(message); };
    if (part.group.total <= 1)
        return show({part}, now).map(shown);
    return m_store.received()
        .waiting(part.group)
        .and_then([&](const QList<ReceivedPart> &parts) -> StoreResult<Message> {
            if (!isWhole(parts))
                return Message();
            return show(parts, now).map(shown);
        });
}

StoreResult<ReceivedMessage> Inbox::show(const QList<ReceivedPart> &parts, const QString &now)
{
    const ReceivedPart &first = parts.constFirst();
    ReceivedMessage message{0, now, first.sentAt, first.group.phone, joined(parts), false};
    QList<qint64> ids;
    for (const ReceivedPart &part : parts) {
        // One that says something else belongs to another message, and goes on waiting.
        if (part.text == partWith(parts, part.number)->text)
            ids.append(part.id);
    }
    return m_store.received().addMessage(message, ids).map([&message](qint64 id) {
        message.id = id;
        return message;
    });
}

StoreResult<std::optional<ReceivedMessage>> Inbox::showIncomplete(const QString &before,
                                                                  const QString &now)
{
    using Message = std::optional<ReceivedMessage>;
    return m_store.database().together([&]() -> StoreResult<Message> {
        return m_store.received().waitingSince(before, 1).and_then(
            [&](const QList<ReceivedPart> &oldest) -> StoreResult<Message> {
                if (oldest.isEmpty())
                    return Message();
                return m_store.received()
                    .waiting(oldest.constFirst().group)
                    .and_then([&](const QList<ReceivedPart> &parts) { return show(parts, now); })
                    .map([](const ReceivedMessage &shown) { return Message(shown); });
            });
    });
}

} // namespace norvane
