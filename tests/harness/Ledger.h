#pragma once

#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

namespace norvane {

// What became of every message, counted from the device's side against the store. Each message has
// a phone of its own, by which it is known again.

enum class Queued {
    Answered,   ///< AddSMS answered: the message is the engine's
    Unanswered, ///< the engine ended within the call, which may have been in time
    Refused,    ///< AddSMS failed: the message is not the engine's
};

struct QueuedMessage
{
    QString phone;
    QString text;
    Queued how = Queued::Answered;
};

/// A part as the device accepted it.
struct ReceivedPart
{
    QString phone;
    QString text;
    int part = 1;
    int parts = 1;
};

/// A row of the queue.
struct WaitingMessage
{
    QString phone;
    int state = 0; ///< 0 waiting, 1 a part is leaving, 2 between two parts
    int partsSent = 0;
};

struct MessageOutcome
{
    QString phone;
    int code = 0; ///< 1 sent, else the error code
    bool isDelivered = false;
    /// Its engine has learnt of each part that the device took, and was not killed before.
    bool isKnown = false;
};

/// A message that somebody sent to the device, or that the store has as received.
struct Mail
{
    QString phone; ///< the sender's, and of no other message
    QString text;
};

/// Whether the network has handed over a report on every part that it took.
enum class Reports { MayBeUnderway, HandedOver };

struct Account
{
    QList<QueuedMessage> queued;
    QList<ReceivedPart> received;
    QList<WaitingMessage> waiting;
    QList<MessageOutcome> outcomes;
    /// Failures as the engine told them, in the order of telling.
    QList<MessageOutcome> told;
    Reports reports = Reports::MayBeUnderway;
    QList<Mail> mailGiven; ///< whole messages that the network has handed to the device
    QList<Mail> mailKept;  ///< as the store shows them
};

struct Tally
{
    // What may be.
    int queued = 0;
    int sent = 0;
    int failed = 0;
    int arrived = 0;   ///< of the failed ones with -39: received whole all the same
    int corrected = 0; ///< of the sent ones: were in doubt before, for another engine
    int waiting = 0;
    int delivered = 0; ///< of the sent ones: a report says so
    int mail = 0;      ///< messages that the device was given

    // What must not be.
    int twice = 0; ///< received twice, in two places, or about to be sent again
    int lost = 0;  ///< nowhere, or told as sent and not received
    /// Received whole and told as failed for good, or as in doubt by an engine that knew; or
    /// received with another text; or told as sent and not so.
    int untrue = 0;
    int strange = 0;      ///< received, waiting or told, and never queued
    int untold = 0;       ///< failures that the engine told never, twice, or with another code
    int uncommitted = 0;  ///< left for the network before the store knew
    int unfenced = 0;     ///< parts that an engine began in an epoch that was over
    int reportsLost = 0;  ///< sent, reported on by the network, and not told as delivered
    int reportsWrong = 0; ///< told as delivered, and not received whole
    int mailLost = 0;     ///< given to the device, and not in the store
    int mailDoubled = 0;  ///< in the store more than once
    int mailTorn = 0;     ///< in the store with another text, or given by nobody
    int stuck = 0;        ///< what was waited for did not come

    int cycles = 0;
    QStringList faults; ///< what must not be, in words

    bool isClean() const;
    /// "cycles=50 queued=210 …"
    QString line() const;
    /// Adds what line() gave.
    void addLine(const QString &line);
    void fault(int Tally::*kind, const QString &text);
};

Tally count(const Account &account);

} // namespace norvane
