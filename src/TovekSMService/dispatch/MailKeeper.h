#pragma once

#include "TovekSMService/modem/device/Arrival.h"
#include "TovekSMService/reports/DeliveryReports.h"
#include "TovekSMService/reports/Inbox.h"
#include "TovekSMService/reports/OptOutWords.h"
#include "TovekSMService/time/Timer.h"

#include <QObject>

namespace norvane {

class Clock;
class Modem;
class OptOuts;
class Outbox;
class Store;
struct EngineSettings;

/// Keeps what the network sends, status reports and messages, and lets the device delete it behind
/// the commit. Gives up on reports that don't come, and on the parts of long messages that don't.
class MailKeeper : public QObject
{
    Q_OBJECT

public:
    /// @param store, reports, optOuts, modem, clock, outbox  must outlive this object
    MailKeeper(Store &store, DeliveryReports &reports, OptOuts &optOuts, Modem &modem,
               const Clock &clock, Outbox &outbox, const EngineSettings &settings);

Q_SIGNALS:
    /// @param at  "yyyy-MM-ddTHH:mm:ss"
    void deliveryChanged(const DeliveryChange &change);
    /// A message is whole, or is shown as much of it as came.
    void received(const ReceivedMessage &message);
    /// What the device handed over has been looked at: something else may have its turn.
    void taken();

private:
    /// What is to be told once it is on disk.
    struct News
    {
        QList<DeliveryChange> deliveries;
        QList<ReceivedMessage> messages;
    };

    void onMailRead(const QList<Arrival> &arrivals);
    StoreResult<> keep(const Arrival &arrival, News &news);
    StoreResult<> keepReport(const QByteArray &pdu, const StatusReportPdu &report, News &news);
    StoreResult<> keepMessage(const QByteArray &pdu, const std::optional<DeliverPdu> &message,
                              News &news);
    StoreResult<> heed(const ReceivedMessage &message);
    void giveUpLate();
    StoreResult<> giveUpLate(News &news);
    void tell(const News &news);

    Store &m_store;
    DeliveryReports &m_reports;
    OptOuts &m_optOuts;
    Inbox m_inbox;
    Modem &m_modem;
    const Clock &m_clock;
    Outbox &m_outbox;
    const OptOutWords m_words;
    const qint64 m_reportSeconds; ///< for which a report is waited for
    Timer m_late;
};

} // namespace norvane
