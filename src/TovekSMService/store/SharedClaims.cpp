#include "TovekSMService/store/SharedClaims.h"

#include "TovekSMService/store/EngineRegister.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/PostgresText.h"
#include "TovekSMService/store/SharedQueries.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString numberText(std::optional<int> number)
{
    return number ? QString::number(*number) : u""_s;
}

} // namespace

SharedClaims::SharedClaims(PostgresDatabase &database, EngineRegister &engines, const Now &now,
                           int sameSenderSeconds)
    : m_shared(database), m_engines(engines), m_now(now), m_sameSenderSeconds(sameSenderSeconds)
{}

StoreResult<> SharedClaims::enroll()
{
    return m_engines.enroll().map([this] {
        m_isEpochOver = false;
        m_epochs.append(m_engines.epoch());
    });
}

/// With nothing on its way, what this run of the program began in an epoch that is over did not
/// leave: its commit was not known of.
StoreResult<> SharedClaims::recover()
{
    return (m_isEpochOver ? enroll() : StoreResult<>())
        .and_then([this] {
            return m_shared.write(
                SharedQueries::releaseLeaving,
                {m_engines.id(), PostgresText::array(m_epochs), m_engines.epoch()});
        })
        .map([this] {
            m_needsRecovery = false;
            m_epochs = {m_engines.epoch()}; // of those before, nothing leaves any more
        });
}

void SharedClaims::noteEpochEnded()
{
    m_isEpochOver = true;
    m_needsRecovery = true;
}

void SharedClaims::settleAs(qint64 epoch)
{
    m_settlingEpoch = epoch;
}

qint64 SharedClaims::settlingEpoch() const
{
    return m_settlingEpoch != 0 ? m_settlingEpoch : m_engines.epoch();
}

QVariantList SharedClaims::valuesOfFirst(int max) const
{
    QVariantList values = {m_engines.id(), m_engines.id(), m_now(0)};
    if (m_sameSenderSeconds > 0)
        values += {m_engines.id(), EngineRegister::silentSeconds, m_now(-m_sameSenderSeconds)};
    values.append(max);
    return values;
}

StoreResult<QList<StoredMessage>> SharedClaims::first(int max) const
{
    const QVariantList values = valuesOfFirst(max);
    if (!m_shared.isTogether())
        return m_shared.rows(m_sameSenderSeconds > 0 ? SharedQueries::firstOfSender
                                                     : SharedQueries::first,
                             values, MessageQueue::messageOf);
    // What is begun now must be of an epoch that holds until the commit.
    bool isHeld = false;
    m_shared.ask(SharedQueries::fence, {m_engines.id(), m_engines.epoch()},
                 [&isHeld](const StoreRow &) {
                     isHeld = true;
                     return false;
                 });
    StoreResult<QList<StoredMessage>> messages = m_shared.rows(
        m_sameSenderSeconds > 0 ? SharedQueries::firstOfSenderToBegin : SharedQueries::firstToBegin,
        values, MessageQueue::messageOf);
    if (messages && isHeld) {
        for (StoredMessage &message : *messages)
            message.epoch = m_engines.epoch();
    }
    if (!messages || isHeld)
        return messages;
    m_isEpochOver = true;
    m_needsRecovery = true;
    return QList<StoredMessage>();
}

StoreResult<QList<StoredMessage>> SharedClaims::interrupted() const
{
    return m_shared.rows(SharedQueries::interrupted, {m_engines.id(), m_engines.epoch()},
                         MessageQueue::messageOf);
}

StoreResult<> SharedClaims::begin(const QList<BegunPart> &parts)
{
    QList<qint64> ids;
    QStringList references;
    QStringList hashes;
    for (const BegunPart &part : parts) {
        ids.append(part.message);
        references.append(numberText(part.reference));
        hashes.append(u"\\x"_s + QString::fromLatin1(part.hash.toHex()));
    }
    using PostgresText::array;
    return m_shared.write(SharedQueries::begin, {m_engines.id(), m_engines.epoch(), array(ids),
                                                 array(references), array(hashes)});
}

StoreResult<> SharedClaims::endPart(qint64 id, int partsSent)
{
    return m_shared.write(SharedQueries::endPart, {partsSent, id, m_engines.id(), settlingEpoch()});
}

StoreResult<> SharedClaims::cancel(const QList<qint64> &ids)
{
    return m_shared.write(SharedQueries::cancel,
                          {PostgresText::array(ids), m_engines.id(), settlingEpoch()});
}

StoreResult<> SharedClaims::releaseBetweenParts()
{
    return m_shared.write("UPDATE message SET state = 0 WHERE engine = ? AND state = 2",
                          {m_engines.id()});
}

StoreResult<> SharedClaims::holdPartlySent()
{
    return m_shared.write("UPDATE message SET state = 2 WHERE engine = ? AND state = 0 "
                          "AND parts_sent > 0",
                          {m_engines.id()});
}

StoreResult<> SharedClaims::postpone(qint64 id, int attempts, const QString &nextAttempt)
{
    return m_shared.write(SharedQueries::postpone, {attempts, nextAttempt, nextAttempt, id,
                                                    m_engines.id(), settlingEpoch()});
}

StoreResult<> SharedClaims::makeWay(qint64 id, const QString &until)
{
    return m_shared.write(SharedQueries::makeWay,
                          {m_engines.id(), until, id, m_engines.id(), settlingEpoch()});
}

StoreResult<SharedClaims::Finished> SharedClaims::finish(qint64 id, qint32 code,
                                                         std::optional<int> networkReference,
                                                         const QString &at, bool reported)
{
    const QVariant reference = networkReference ? QVariant(*networkReference) : QVariant();
    return m_shared
        .row(SharedQueries::finish,
             {id, m_engines.id(), settlingEpoch(), m_engines.id(), code, reference, at,
              reported ? 1 : 0, m_engines.id(), settlingEpoch(), m_engines.id(), m_engines.id(), id,
              m_engines.id()},
             [](const StoreRow &row) {
                 return Finished{row.value(0).toLongLong(), row.value(1).toInt() != 0};
             })
        .map([](const std::optional<Finished> &finished) { return finished.value_or(Finished()); });
}

StoreResult<> SharedClaims::finishSent(const QList<SentMessage> &messages)
{
    QList<qint64> ids;
    QStringList references;
    QStringList moments;
    for (const SentMessage &sent : messages) {
        ids.append(sent.id);
        references.append(numberText(sent.networkReference));
        moments.append(sent.at);
    }
    using PostgresText::array;
    const char *const statement =
        m_sameSenderSeconds > 0 ? SharedQueries::finishServed : SharedQueries::finishSent;
    // A statement doesn't see the outcomes of a takeover that ends while it waits for the rows.
    return m_shared.together([&] {
        return m_shared.write(SharedQueries::awaitTakeover, {m_engines.id()}).and_then([&] {
            return m_shared.write(statement,
                                  {array(ids), array(references), array(moments), m_engines.id(),
                                   settlingEpoch(), m_engines.id(), settlingEpoch(), m_engines.id(),
                                   m_engines.id(), settlingEpoch(), m_engines.id()});
        });
    });
}

} // namespace norvane
