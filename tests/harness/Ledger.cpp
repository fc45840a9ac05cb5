#include "harness/Ledger.h"

#include <QMap>

#include <array>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int sentCode = 1;
constexpr int mayBeDelivered = -39;
constexpr int leaving = 1;

constexpr std::array<std::pair<const char *, int Tally::*>, 22> numbers = {
    {{"cycles", &Tally::cycles},
     {"queued", &Tally::queued},
     {"sent", &Tally::sent},
     {"failed", &Tally::failed},
     {"arrived", &Tally::arrived},
     {"corrected", &Tally::corrected},
     {"waiting", &Tally::waiting},
     {"delivered", &Tally::delivered},
     {"mail", &Tally::mail},
     {"twice", &Tally::twice},
     {"lost", &Tally::lost},
     {"untrue", &Tally::untrue},
     {"strange", &Tally::strange},
     {"untold", &Tally::untold},
     {"uncommitted", &Tally::uncommitted},
     {"unfenced", &Tally::unfenced},
     {"reports-lost", &Tally::reportsLost},
     {"reports-wrong", &Tally::reportsWrong},
     {"mail-lost", &Tally::mailLost},
     {"mail-doubled", &Tally::mailDoubled},
     {"mail-torn", &Tally::mailTorn},
     {"stuck", &Tally::stuck}}};

/// Everything that is known of one phone.
struct Story
{
    const QueuedMessage *message = nullptr;
    QMap<int, QList<ReceivedPart>> parts;
    QList<WaitingMessage> waiting;
    QList<MessageOutcome> outcomes;
    QList<MessageOutcome> told;

    bool isWhole() const
    {
        return !parts.isEmpty() && parts.first().constFirst().parts == parts.size();
    }

    /// The first `number` parts were received, and no other.
    bool isReceivedUpTo(int number) const
    {
        return parts.size() == number && (number == 0 || parts.lastKey() == number);
    }

    QString text() const
    {
        QString whole;
        for (const QList<ReceivedPart> &copies : parts)
            whole += copies.constFirst().text;
        return whole;
    }
};

QHash<QString, Story> storiesOf(const Account &account)
{
    QHash<QString, Story> stories;
    for (const QueuedMessage &message : account.queued)
        stories[message.phone].message = &message;
    for (const ReceivedPart &part : account.received)
        stories[part.phone].parts[part.part].append(part);
    for (const WaitingMessage &message : account.waiting)
        stories[message.phone].waiting.append(message);
    for (const MessageOutcome &outcome : account.outcomes)
        stories[outcome.phone].outcomes.append(outcome);
    for (const MessageOutcome &outcome : account.told)
        stories[outcome.phone].told.append(outcome);
    return stories;
}

class Judge
{
public:
    Judge(const QString &phone, const Story &story, Reports reports, Tally &tally)
        : m_phone(phone), m_story(story), m_reports(reports), m_tally(tally)
    {}

    void judge()
    {
        if (m_story.message == nullptr) {
            fault(&Tally::strange, "was never queued");
            return;
        }
        ++m_tally.queued;
        judgeReception();
        judgePlace();
        judgeTelling();
    }

private:
    void judgeReception()
    {
        for (const QList<ReceivedPart> &copies : m_story.parts) {
            if (copies.size() > 1)
                fault(&Tally::twice, "a part was received more than once");
        }
        if (m_story.isWhole() && m_story.text() != m_story.message->text)
            fault(&Tally::untrue, "was received with another text");
    }

    void judgePlace()
    {
        const qsizetype places = m_story.waiting.size() + m_story.outcomes.size();
        const Queued how = m_story.message->how;
        if (places > 1)
            fault(&Tally::twice, "is in more than one place");
        else if (places == 1 && how == Queued::Refused)
            fault(&Tally::strange, "is there although its call failed");
        else if (places == 0 && how == Queued::Answered)
            fault(&Tally::lost, "is nowhere");
        else if (places == 0 && !m_story.parts.isEmpty())
            fault(&Tally::lost, "was received, and the store knows nothing of it");
        for (const WaitingMessage &message : m_story.waiting)
            judgeWaiting(message);
        for (const MessageOutcome &outcome : m_story.outcomes)
            judgeOutcome(outcome);
        for (const MessageOutcome &outcome : m_story.outcomes)
            judgeReports(outcome);
    }

    /// Of a part whose answer was lost nobody knows the reference that its report names.
    void judgeReports(const MessageOutcome &outcome)
    {
        if (outcome.isDelivered)
            ++m_tally.delivered;
        if (outcome.isDelivered && !m_story.isWhole())
            fault(&Tally::reportsWrong, "is told as delivered and was not received whole");
        const bool isDue = m_reports == Reports::HandedOver && outcome.code == sentCode;
        if (isDue && m_story.isWhole() && !outcome.isDelivered)
            fault(&Tally::reportsLost, "was reported as delivered and is not told so");
    }

    void judgeWaiting(const WaitingMessage &message)
    {
        ++m_tally.waiting;
        const bool maybeOneMore =
            message.state == leaving && m_story.isReceivedUpTo(message.partsSent + 1);
        if (m_story.isReceivedUpTo(message.partsSent) || maybeOneMore)
            return;
        if (m_story.parts.size() > message.partsSent)
            fault(&Tally::twice, "waits to send what was received");
        else
            fault(&Tally::lost, "waits with a part counted as sent that was not received");
    }

    void judgeOutcome(const MessageOutcome &outcome)
    {
        if (outcome.code == sentCode) {
            ++m_tally.sent;
            if (!m_story.isWhole())
                fault(&Tally::lost, "is told as sent and was not received whole");
            return;
        }
        ++m_tally.failed;
        if (m_story.isWhole() && outcome.isKnown)
            fault(&Tally::untrue, "is told as failed and is known to be received");
        else if (m_story.isWhole() && outcome.code == mayBeDelivered)
            ++m_tally.arrived;
        else if (m_story.isWhole())
            fault(&Tally::untrue, "is told as failed for good and was received");
    }

    void judgeTelling()
    {
        QList<int> failed;
        for (const MessageOutcome &outcome : m_story.outcomes) {
            if (outcome.code != sentCode)
                failed.append(outcome.code);
        }
        QList<int> told;
        for (const MessageOutcome &outcome : m_story.told)
            told.append(outcome.code);
        if (failed != told)
            fault(&Tally::untold, "failed and was not told once, or not so");
    }

    void fault(int Tally::*kind, const char *what)
    {
        m_tally.fault(kind, m_phone + u" "_s + QLatin1String(what));
    }

    const QString &m_phone;
    const Story &m_story;
    const Reports m_reports;
    Tally &m_tally;
};

/// What became of the messages that the device was given. A text in the store is that of one
/// message, whole.
void judgeMail(const Account &account, Tally &tally)
{
    QHash<QString, QStringList> kept;
    for (const Mail &mail : account.mailKept)
        kept[mail.phone].append(mail.text);
    tally.mail = static_cast<int>(account.mailGiven.size());
    for (const Mail &mail : account.mailGiven) {
        QStringList texts = kept.take(mail.phone);
        const qsizetype whole = texts.removeAll(mail.text);
        if (whole > 1)
            tally.fault(&Tally::mailDoubled, mail.phone + u" is in the store more than once"_s);
        if (whole == 0 && texts.isEmpty())
            tally.fault(&Tally::mailLost, mail.phone + u" is not in the store"_s);
        if (!texts.isEmpty())
            tally.fault(&Tally::mailTorn, mail.phone + u" is in the store with another text"_s);
    }
    for (auto strange = kept.cbegin(); strange != kept.cend(); ++strange)
        tally.fault(&Tally::mailTorn, strange.key() + u" is in the store, and nobody sent it"_s);
}

} // namespace

bool Tally::isClean() const
{
    return twice + lost + untrue + strange + untold + uncommitted + unfenced + reportsLost +
               reportsWrong + mailLost + mailDoubled + mailTorn + stuck ==
           0;
}

QString Tally::line() const
{
    QStringList words;
    for (const auto &[name, number] : numbers)
        words << u"%1=%2"_s.arg(QLatin1String(name)).arg(this->*number);
    return words.join(u' ');
}

void Tally::addLine(const QString &line)
{
    for (const QString &word : line.split(u' ')) {
        for (const auto &[name, number] : numbers) {
            const QString start = QLatin1String(name) + u'=';
            if (word.startsWith(start))
                this->*number += word.mid(start.size()).toInt();
        }
    }
}

void Tally::fault(int Tally::*kind, const QString &text)
{
    ++(this->*kind);
    faults << text;
}

Tally count(const Account &account)
{
    Tally tally;
    const QHash<QString, Story> stories = storiesOf(account);
    for (auto story = stories.cbegin(); story != stories.cend(); ++story)
        Judge(story.key(), story.value(), account.reports, tally).judge();
    judgeMail(account, tally);
    return tally;
}

} // namespace norvane
