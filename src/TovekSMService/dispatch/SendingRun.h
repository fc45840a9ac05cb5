#pragma once

#include "TovekSMService/modem/codec/SubmitPdu.h"
#include "TovekSMService/store/MessageQueue.h"
#include "TovekSMService/store/Settlement.h"

#include <QList>
#include <QString>

#include <optional>

namespace norvane {

/// A message of which a part is leaving.
struct LeavingMessage
{
    StoredMessage message;
    QList<SubmitPart> parts;
    QString begunAt; ///< under which its part is counted, where parts are

    /// The one whose turn it is.
    const SubmitPart &part() const;
};

/// Messages that were noted as leaving with one commit: those that are still to be handed to the
/// device, and those that it has taken since, whose outcomes belong to the next commit.
class SendingRun
{
public:
    struct Taken
    {
        StoredMessage message;
        int reference = 0;                ///< the network's
        QString at;                       ///< "yyyy-MM-ddTHH:mm:ss"
        std::optional<SentPart> lastPart; ///< if the network was asked to report about it
    };

    SendingRun() = default;
    explicit SendingRun(const QList<LeavingMessage> &messages) : m_ahead(messages) {}

    bool isEmpty() const { return m_ahead.isEmpty() && m_taken.isEmpty(); }
    bool hasNext() const { return !m_ahead.isEmpty(); }
    LeavingMessage takeNext() { return m_ahead.takeFirst(); }
    void recordTaken(const Taken &taken) { m_taken.append(taken); }
    const QList<Taken> &taken() const { return m_taken; }

    /// What was taken is sent, and what was not handed over waits again.
    QList<Settlement> settlements() const;

private:
    QList<LeavingMessage> m_ahead;
    QList<Taken> m_taken;
};

} // namespace norvane
