#include "TovekSMService/dispatch/Dispatcher.h"

#include "TovekSMService/log/Categories.h"
#include "contract/ErrorCodes.h"

#include <QScopeGuard>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

Dispatcher::Dispatcher(Store &store, Modem &modem, const Clock &clock, const RetryPolicy &retries,
                       const DispatcherTimings &timings, const EngineSettings &settings,
                       PartEncoder::Encode encode, QObject *parent)
    : QObject(parent), m_store(store),
      m_outbox(store.database(), store.outcomes(), timings, clock.time(), store.keptSettlements()),
      m_device(store.settings(), modem, clock, m_outbox, m_state, retries, timings, settings),
      m_scheduler(store, clock, settings, std::move(encode), [&modem] { return modem.unit(); }),
      m_optOuts(store.optOuts(), settings.countryPrefix),
      m_lists(store, m_optOuts, clock, m_outbox), m_reports(store),
      m_sender(store.queue(), m_reports, modem, clock, m_outbox, m_device, m_scheduler, m_state,
               retries, timings),
      m_presence(store, clock, m_outbox, m_device, m_state, timings),
      m_mail(store, m_reports, m_optOuts, modem, clock, m_outbox, settings),
      m_pruner(store, clock, settings.keepDays, timings.pruning)
{
    connect(&m_sender, &Sender::wake, this, &Dispatcher::work);

    connect(&m_device, &DeviceKeeper::deviceInfo, this, &Dispatcher::deviceInfo);
    connect(&m_device, &DeviceKeeper::changed, this, &Dispatcher::work);
    connect(&m_device, &DeviceKeeper::steady, this, [this] {
        // What becomes of the part in progress belongs to the fault.
        if (m_sender.isSending())
            m_device.restartSteadyTimer();
        else
            m_device.endFault();
    });

    connect(&m_presence, &EnginePresence::changed, this, &Dispatcher::work);
    connect(&m_presence, &EnginePresence::opened, this, &Dispatcher::queueOpened);
    connect(&m_outbox, &Outbox::queueChanged, &m_presence, &EnginePresence::passOnNews);
    connect(&m_outbox, &Outbox::committed, &m_presence, &EnginePresence::passOnNews);

    connect(&modem, &Modem::mailDue, this, &Dispatcher::workLater);
    // What was routed is taken while work() is still on the stack.
    connect(&m_mail, &MailKeeper::taken, this, &Dispatcher::workLater);
    connect(&m_mail, &MailKeeper::deliveryChanged, this, &Dispatcher::deliveryChanged);
    connect(&m_mail, &MailKeeper::received, this, &Dispatcher::received);

    connect(&m_outbox, &Outbox::queueChanged, this, &Dispatcher::queueChanged);
    connect(this, &Dispatcher::queueChanged, this, &Dispatcher::historyChanged);
    connect(&m_mail, &MailKeeper::deliveryChanged, this, &Dispatcher::noticeHistoryChange);
    connect(&m_mail, &MailKeeper::received, this, &Dispatcher::noticeHistoryChange);
    connect(&m_pruner, &OutcomePruner::forgotten, this, &Dispatcher::noticeHistoryChange);
    connect(&m_presence, &EnginePresence::historyChanged, this, &Dispatcher::historyChanged);
    connect(&m_outbox, &Outbox::sent, this, &Dispatcher::sent);
    connect(&m_outbox, &Outbox::sendingFailed, this, &Dispatcher::sendingFailed);
    connect(&m_outbox, &Outbox::warning, this, &Dispatcher::warning);
    connect(&m_outbox, &Outbox::reportRaised, this, &Dispatcher::reportRaised);
    connect(&m_outbox, &Outbox::warningHandled, this, &Dispatcher::warningHandled);
    connect(&m_outbox, &Outbox::warned, this, &Dispatcher::warned);
    // What doesn't follow in the same commit begins from the event loop, so that a long queue is no
    // deep recursion and calls from outside get their turn.
    connect(&m_outbox, &Outbox::committed, this, &Dispatcher::work, Qt::QueuedConnection);
    connect(&m_outbox.storeMonitor(), &StoreMonitor::lost, this, &Dispatcher::storeLost);
    connect(&m_outbox.storeMonitor(), &StoreMonitor::writable, this, &Dispatcher::work);
}

StoreResult<> Dispatcher::resume()
{
    const StoreResult<bool> run = m_store.settings().isToRun();
    if (!run)
        return failed(run.error());
    if (StoreResult<> recalled = m_device.recallReset(); !recalled)
        return recalled;
    if (StoreResult<> settled = settleKept(); !settled)
        return settled;
    m_state.running = *run;
    if (m_state.running) {
        m_sender.cancelRelease();
        Q_EMIT statusChanged(status());
    } else {
        m_sender.requestRelease();
    }
    if (!m_sender.reportInterrupted())
        workLater();
    return {};
}

/// What an earlier run of the program could not hand over goes before everything else.
StoreResult<> Dispatcher::settleKept()
{
    if (m_store.keptSettlements() == nullptr)
        return {};
    return m_store.keptSettlements()->all().map([this](const QList<Settlement> &kept) {
        if (!kept.isEmpty())
            m_sender.settleKept(kept);
    });
}

StoreResult<> Dispatcher::start()
{
    const StoreResult<DeviceSettings> settings = m_store.settings().deviceSettings();
    if (!settings)
        return failed(settings.error());
    if (m_state.running && m_device.isInForce(*settings))
        return {};
    if (const StoreResult<> noted = noteStart(); !noted)
        return noted;
    m_device.putInForce(*settings, DeviceKeeper::Reopening::IfChanged);
    m_state.running = true;
    Q_EMIT statusChanged(status());
    work();
    return {};
}

StoreResult<> Dispatcher::noteStart()
{
    const auto hold = [this] { return m_store.queue().holdPartlySent(); };
    if (!m_store.isShared())
        return m_store.database().together(
            [&] { return m_store.settings().setToRun(true).and_then(hold); });
    // An engine can be started while the database is away. What it holds shows in the grids as in
    // progress a little later then: nobody else sends it.
    return m_store.settings().setToRun(true).map([&] {
        if (const StoreResult<> held = hold(); !held)
            qCInfo(logDispatch) << "messages in progress are not marked:" << held.error().text();
    });
}

StoreResult<> Dispatcher::stop()
{
    if (!m_state.running)
        return {};
    return m_store.settings().setToRun(false).map([this] {
        m_state.running = false;
        m_sender.requestRelease();
        m_device.releaseTested();
        Q_EMIT statusChanged(status());
        work();
    });
}

StoreResult<> Dispatcher::applySettings()
{
    return m_store.settings().deviceSettings().map([this](const DeviceSettings &settings) {
        m_device.putInForce(settings, DeviceKeeper::Reopening::Always);
        work();
    });
}

void Dispatcher::testDevice(TestAnswer answer)
{
    m_device.test(std::move(answer));
    work();
}

StoreResult<> Dispatcher::addList(const QString &token, const QList<SMSList::Entry> &list,
                                  const QString &deliveryDate)
{
    return m_lists.add(token, list, deliveryDate).map([&] {
        if (!list.isEmpty())
            noticeQueueChange();
    });
}

void Dispatcher::noticeQueueChange()
{
    Q_EMIT queueChanged();
    // Whoever changed the queue is answered first: what begins now has a commit and a line of its
    // own to wait for.
    workLater();
}

void Dispatcher::noticeHistoryChange()
{
    Q_EMIT historyChanged();
    m_presence.passOnHistoryChange();
}

void Dispatcher::warnTooLate()
{
    Q_EMIT queueChanged();
    warn(ErrorCode::phoneBusy,
         u"the change came too late for a message that is being sent or has left the "
         "queue"_s);
}

void Dispatcher::finish()
{
    m_state.finishing = true;
    work();
}

void Dispatcher::workLater()
{
    QMetaObject::invokeMethod(this, &Dispatcher::work, Qt::QueuedConnection);
}

void Dispatcher::work()
{
    m_sender.setHeldBack(m_presence.isHeldBack());
    if (m_working || m_sender.isSending())
        return;
    m_working = true;
    const auto leave = qScopeGuard([this] { m_working = false; });

    if (!m_device.mayClose())
        return;
    if (m_state.finishing) {
        if (m_outbox.isSafe()) {
            m_device.shutDown();
            Q_EMIT finished();
        }
        return;
    }
    if (m_outbox.isEmpty() && !m_sender.recover())
        return;
    if (!m_state.running && m_outbox.isEmpty())
        m_sender.release();
    if (m_device.keep() && m_outbox.isEmpty())
        m_sender.sendFirst();
}

QList<Dispatcher::Warning> Dispatcher::activeFaults() const
{
    QList<Warning> faults;
    if (m_state.running && m_device.fault().code != 0)
        faults.append(m_device.fault());
    if (const QString fault = m_outbox.storeMonitor().fault(); !fault.isEmpty())
        faults.append({ErrorCode::mapFile, fault});
    if (m_presence.isHeldBack())
        faults.append({ErrorCode::fail, m_presence.fault()});
    return faults;
}

void Dispatcher::storeReplaced()
{
    m_device.forgetSettings();
    m_sender.forgetMessages();
    if (std::exchange(m_state.running, false))
        Q_EMIT statusChanged(status());
    Q_EMIT queueChanged();
    work();
}

} // namespace norvane
