#include "TovekSMService/modem/codec/IncomingPdu.h"
#include "TovekSMService/reports/DeliveryReports.h"
#include "TovekSMService/store/Store.h"
#include "gsm-simulator/StatusReport.h"

#include "TovekSMService/store/StoreResults.h"

#include <QHash>
#include <QLoggingCategory>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int maxParts = 100'000;
constexpr int sims = 16;
constexpr int references = 256;

struct Recipient
{
    QString phone;
    int person; ///< who may be called by more than one number
};

const QList<Recipient> &recipients()
{
    static const QList<Recipient> list{{u"+34612345670"_s, 0},
                                       {u"612345670"_s, 0},
                                       {u"+34612345671"_s, 1},
                                       {u"612345672"_s, 2},
                                       {u"0034612345673"_s, 3}};
    return list;
}

const Recipient &stranger()
{
    static const Recipient nobody{u"+34699999999"_s, -1};
    return nobody;
}

/// A report that the network has for us.
struct Report
{
    int sim = 0;
    int reference = 0;
    Recipient recipient;
    int status = 0;
};

/// What has to become of parts and messages: for each SIM and reference the parts in the order in
/// which they left, searched from the end.
class SentList
{
public:
    struct Part
    {
        qint64 message;
        Recipient recipient;
        DeliveryState state = DeliveryState::Pending;
    };

    void add(int sim, int reference, qint64 message, const Recipient &recipient)
    {
        m_byReference.at(sim).at(reference).append(m_parts.size());
        m_byMessage[message].append(m_parts.size());
        m_parts.append({message, recipient});
    }

    /// @return the message whose state has become another one
    std::optional<qint64> take(const Report &report)
    {
        Part *const part = partOf(report);
        if (part == nullptr) {
            ++m_unmatched;
            return std::nullopt;
        }
        const DeliveryState before = stateOf(part->message);
        part->state = report.status == 0x00   ? DeliveryState::Delivered
                      : report.status == 0x01 ? DeliveryState::Unknown
                      : report.status == 0x20 ? DeliveryState::Pending
                                              : DeliveryState::Refused;
        return stateOf(part->message) == before ? std::nullopt : std::optional(part->message);
    }

    DeliveryState stateOf(qint64 message) const
    {
        const QList<DeliveryState> states = statesOf(message);
        for (const DeliveryState state :
             {DeliveryState::Refused, DeliveryState::Pending, DeliveryState::Unknown})
            if (states.contains(state))
                return state;
        return DeliveryState::Delivered;
    }

    QList<DeliveryState> statesOf(qint64 message) const
    {
        QList<DeliveryState> states;
        for (const qsizetype part : m_byMessage.value(message))
            states.append(m_parts.at(part).state);
        return states;
    }

    int unmatched() const { return m_unmatched; }
    int choices() const { return m_choices; }

private:
    Part *partOf(const Report &report)
    {
        const QList<qsizetype> &all = m_byReference.at(report.sim).at(report.reference);
        Part *same = nullptr;
        Part *alike = nullptr;
        int open = 0;
        for (auto place = all.crbegin(); place != all.crend(); ++place) {
            Part &part = m_parts[*place];
            if (part.state != DeliveryState::Pending ||
                part.recipient.person != report.recipient.person)
                continue;
            ++open;
            if (same == nullptr && part.recipient.phone == report.recipient.phone)
                same = &part;
            if (alike == nullptr)
                alike = &part;
        }
        m_choices += open > 1 ? 1 : 0;
        return same != nullptr ? same : alike;
    }

    QList<Part> m_parts;
    std::array<std::array<QList<qsizetype>, references>, sims> m_byReference;
    QHash<qint64, QList<qsizetype>> m_byMessage;
    int m_unmatched = 0;
    int m_choices = 0; ///< reports for which more than one part was open
};

/// Sends messages, and brings the reports on them as a network does that loses, doubles, delays and
/// mixes up.
class ReportMatching : public testing::Test
{
protected:
    ReportMatching()
    {
        done(m_store.open());
        // The whole database stays in memory: what is asked of it here isn't how quick the disk is.
        done(m_store.database().write("PRAGMA cache_size = -262144"));
        for (int &reference : m_references)
            reference = m_random.bounded(references);
        // Each of the strangers' reports would be a line of the log.
        QLoggingCategory::setFilterRules(u"engine.dispatch.info=false"_s);
    }

    ~ReportMatching() override { QLoggingCategory::setFilterRules(QString()); }

    void sendMessage()
    {
        const qint64 message = ++m_messages;
        const int sim = m_random.bounded(sims);
        const Recipient recipient = recipients().at(below(recipients().size()));
        const int total = 1 + m_random.bounded(4);
        for (int number = 1; number <= total; ++number) {
            int &reference = m_references.at(sim);
            reference = (reference + 1) % references;
            done(m_reports.keepSent(
                SentPart{message, number, total, reference, recipient.phone, simOf(sim), m_now}));
            m_sent.add(sim, reference, message, recipient);
            ++m_parts;
            prepareReports({sim, reference, recipient, 0});
        }
        done(m_store.database().write(
            "INSERT INTO outcome (id, message_id, delivery_date, phone, text, code, at, reported) "
            "VALUES (?, ?, '', ?, '', 1, ?, 1)",
            {message, message, recipient.phone, m_now}));
        EXPECT_EQ(given(m_reports.refresh(message)).value_or(DeliveryChange()).state,
                  DeliveryState::Pending);
    }

    void bringReports(qsizetype maxLeft)
    {
        while (m_underway.size() > maxLeft && !HasFailure()) {
            m_underway.swapItemsAt(below(m_underway.size()), m_underway.size() - 1);
            bring(m_underway.takeLast());
        }
    }

    void expectAllAsListed()
    {
        const QList<OutcomeRow> outcomes = given(m_store.outcomes().list({}, 0, maxParts));
        ASSERT_EQ(outcomes.size(), m_messages);
        for (const OutcomeRow &outcome : outcomes) {
            ASSERT_EQ(outcome.delivery, m_sent.stateOf(outcome.id)) << outcome.id;
            QList<DeliveryState> states;
            for (const PartState &part : given(m_store.sentParts().ofMessage(outcome.id)))
                states.append(part.state);
            ASSERT_EQ(states, m_sent.statesOf(outcome.id)) << outcome.id;
        }
    }

    int below(qsizetype limit) { return m_random.bounded(static_cast<int>(limit)); }

    static QString simOf(int sim) { return sim == 0 ? QString() : u"893401%1"_s.arg(sim); }

    /// What the network will say of a part.
    void prepareReports(Report report)
    {
        constexpr std::array finals{0x00, 0x00, 0x00, 0x00, 0x01, 0x43, 0x46};
        constexpr int stillTrying = 0x20;
        if (report.recipient.person == 0 && below(5) == 0) // the network writes the number its way
            report.recipient = recipients().at(below(2));
        if (below(20) == 0) {
            report.status = stillTrying;
            m_underway.append(report);
        }
        report.status = finals.at(static_cast<std::size_t>(below(finals.size())));
        if (below(2) == 0) // the others never come
            m_underway.append(report);
        if (below(40) == 0) {
            report.recipient = stranger();
            m_underway.append(report);
        }
        if (below(50) == 0)
            m_underway.append({below(sims), below(references),
                               recipients().at(below(recipients().size())), report.status});
    }

    void bring(const Report &report)
    {
        using simulator::Address;
        const QString &phone = report.recipient.phone;
        const QDateTime moment = m_start.addSecs(++m_count);
        const int type = phone.startsWith(u'+') ? Address::internationalType : Address::unknownType;
        const QByteArray pdu =
            "00" +
            simulator::reportTpdu({report.reference, {phone, type}, moment, moment, report.status})
                .toHex();
        const auto change = take(pdu, report.sim);
        const std::optional<qint64> expected = m_sent.take(report);
        ASSERT_EQ(change.has_value(), expected.has_value()) << pdu.toStdString();
        if (change) {
            ASSERT_EQ(change->message, *expected) << pdu.toStdString();
            ASSERT_EQ(change->state, m_sent.stateOf(*expected)) << pdu.toStdString();
        }
        m_came.append({pdu, report.sim});
        for (; below(10) == 0; ++m_doubled) {
            const auto &[again, sim] =
                m_came.at(below(2) == 0 ? m_came.size() - 1 : below(m_came.size()));
            ASSERT_FALSE(take(below(2) == 0 ? again : again.toUpper(), sim)) << again.toStdString();
        }
    }

    std::optional<DeliveryChange> take(const QByteArray &pdu, int sim)
    {
        const auto report = parseStatusReport(pdu);
        EXPECT_TRUE(report.has_value()) << pdu.toStdString();
        return given(m_reports.take(pdu, report.value_or(StatusReportPdu()), simOf(sim), m_now));
    }

    const QString m_now = u"2026-11-22T12:00:00"_s;
    const QTemporaryDir m_folder;
    Store m_store{m_folder.filePath(u"queue.sqlite"_s)};
    DeliveryReports m_reports{m_store};
    QRandomGenerator m_random{20261122};
    const QDateTime m_start{QDate(2026, 11, 22), QTime(10, 0), Qt::OffsetFromUTC, 3600};
    SentList m_sent;
    QList<Report> m_underway;
    QList<std::pair<QByteArray, int>> m_came;
    std::array<int, sims> m_references{};
    int m_messages = 0;
    int m_parts = 0;
    int m_count = 0;
    int m_doubled = 0;
};

TEST_F(ReportMatching, everyReportGoesToTheLatestPartOfItsRecipientThatWaitsForOne)
{
    constexpr int batch = 10'000;           // parts to one transaction
    constexpr qsizetype maxUnderway = 1500; // reports that the network holds back
    while (m_parts < maxParts) {
        done(m_store.database().together([&]() -> StoreResult<> {
            for (const int end = m_parts + batch; m_parts < end && !HasFailure();) {
                sendMessage();
                bringReports(maxUnderway);
            }
            return {};
        }));
        ASSERT_FALSE(HasFailure()) << m_parts << " parts";
    }
    done(m_store.database().together([&]() -> StoreResult<> {
        bringReports(0);
        return {};
    }));
    expectAllAsListed();
    // All of this has happened, and often.
    EXPECT_GT(m_sent.choices(), 1000) << "reports with a choice of parts";
    EXPECT_GT(m_sent.unmatched(), 1000) << "reports for nothing";
    EXPECT_GT(m_doubled, 1000) << "doubled reports";
}

} // namespace

} // namespace norvane
