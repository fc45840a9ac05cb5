#include "TovekSMService/dispatch/MailKeeper.h"

#include "TovekSMService/dispatch/EngineSettings.h"
#include "TovekSMService/dispatch/Outbox.h"
#include "TovekSMService/log/Categories.h"
#include "TovekSMService/modem/device/Modem.h"
#include "TovekSMService/reports/OptOuts.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"

namespace norvane {

namespace {

constexpr int lateMs = 60'000;       ///< between two looks at what is late
constexpr int maxLateMessages = 200; ///< in one look

/// A network that was asked for no validity period takes its own, which is days.
qint64 reportSeconds(const EngineSettings &settings)
{
    constexpr qint64 networksOwn = 7 * secondsOfDay;
    constexpr qint64 underway = 60 * 60; // from the end of the period to the report
    return settings.validityPeriod > 0 ? settings.validityPeriod * 60LL + underway : networksOwn;
}

} // namespace

MailKeeper::MailKeeper(Store &store, DeliveryReports &reports, OptOuts &optOuts, Modem &modem,
                       const Clock &clock, Outbox &outbox, const EngineSettings &settings)
    : m_store(store), m_reports(reports), m_optOuts(optOuts), m_inbox(store), m_modem(modem),
      m_clock(clock), m_outbox(outbox), m_words(settings.optOutWords, settings.optInWords),
      m_reportSeconds(reportSeconds(settings)), m_late(clock.time())
{
    connect(&modem, &Modem::mailRead, this, &MailKeeper::onMailRead);
    connect(&m_late, &Timer::timeout, this, qOverload<>(&MailKeeper::giveUpLate));
    m_late.start(lateMs);
}

void MailKeeper::onMailRead(const QList<Arrival> &arrivals)
{
    News news;
    const StoreResult<> kept = m_store.database().together([&] {
        StoreResult<> result;
        for (auto arrival = arrivals.cbegin(); result && arrival != arrivals.cend(); ++arrival)
            result = keep(*arrival, news);
        return result;
    });
    if (kept) {
        m_modem.dismissMail(arrivals);
        tell(news);
    } else {
        qCWarning(logDispatch) << "what the network sent can't be kept for now:"
                               << kept.error().text();
        m_outbox.noteStoreFailure(kept.error());
        m_modem.deferMail(arrivals);
    }
    Q_EMIT taken();
}

StoreResult<> MailKeeper::keep(const Arrival &arrival, News &news)
{
    const QByteArray &pdu = arrival.pdu;
    if (const auto *const report = std::get_if<StatusReportPdu>(&arrival.contents))
        return keepReport(pdu, *report, news);
    if (const auto *const message = std::get_if<DeliverPdu>(&arrival.contents))
        return keepMessage(pdu, *message, news);
    if (kindOf(pdu) == IncomingKind::StatusReport) {
        if (const Result<StatusReportPdu, PduFailure> report = parseStatusReport(pdu))
            return keepReport(pdu, *report, news);
        qCWarning(logDispatch) << "a status report can't be read; it is kept with the messages";
    }
    const Result<DeliverPdu, PduFailure> message = parseDeliver(pdu);
    return keepMessage(pdu, message ? std::optional(*message) : std::nullopt, news);
}

StoreResult<> MailKeeper::keepReport(const QByteArray &pdu, const StatusReportPdu &report,
                                     News &news)
{
    return m_reports.take(pdu, report, m_modem.details().simId, m_clock.wallClockText())
        .map([&news](const std::optional<DeliveryChange> &change) {
            if (change)
                news.deliveries.append(*change);
        });
}

StoreResult<> MailKeeper::keepMessage(const QByteArray &pdu,
                                      const std::optional<DeliverPdu> &message, News &news)
{
    return m_inbox.take(pdu, message, m_modem.details().simId, m_clock.wallClockText())
        .and_then([&](const std::optional<ReceivedMessage> &shown) -> StoreResult<> {
            if (!shown)
                return {};
            news.messages.append(*shown);
            return heed(*shown);
        });
}

/// Does what an answer of one word asks for.
StoreResult<> MailKeeper::heed(const ReceivedMessage &message)
{
    const OptOutWords::Answer answer = m_words.answerOf(message.text);
    if (answer == OptOutWords::Answer::Other || message.phone.isEmpty())
        return {};
    const auto done = [](bool) {};
    return answer == OptOutWords::Answer::OptOut
               ? m_optOuts.add(message.phone, message.at).map(done)
               : m_optOuts.remove(message.phone).map(done);
}

void MailKeeper::giveUpLate()
{
    News news;
    const StoreResult<> given = m_store.database().together([&] {
        return m_store.database().mayDoChores().and_then(
            [&](bool isMine) { return isMine ? giveUpLate(news) : StoreResult<>(); });
    });
    if (given)
        tell(news);
    else
        qCWarning(logDispatch) << "what is late can't be looked at for now:"
                               << given.error().text();
    m_late.start(lateMs);
}

StoreResult<> MailKeeper::giveUpLate(News &news)
{
    const QString now = m_clock.wallClockText();
    const auto expired =
        m_reports.expire(m_clock.wallClockText(-m_reportSeconds), now, maxLateMessages);
    if (!expired)
        return failed(expired.error());
    news.deliveries = *expired;
    for (int count = 0; count < maxLateMessages; ++count) {
        const auto shown = m_inbox.showIncomplete(m_clock.wallClockText(-secondsOfDay), now);
        if (!shown)
            return failed(shown.error());
        if (!*shown)
            break;
        news.messages.append(**shown);
    }
    return {};
}

void MailKeeper::tell(const News &news)
{
    for (const DeliveryChange &change : news.deliveries)
        Q_EMIT deliveryChanged(change);
    for (const ReceivedMessage &message : news.messages)
        Q_EMIT received(message);
}

} // namespace norvane
