#include "TovekSMService/dispatch/Dispatcher.h"

#include "TovekSMService/dispatch/ValidityPeriod.h"
#include "contract/ErrorCodes.h"

#include <QDebug>
#include <QScopeGuard>

#include <memory>
#include <utility>

Dispatcher::Dispatcher(Store &store, Modem &modem, const Clock &clock, const RetryPolicy &retries,
                       const DispatcherTimings &timings, const EngineSettings &settings,
                       PartEncoder::Encode encode, QObject *parent)
    : QObject(parent), m_store(store), m_modem(modem), m_clock(clock), m_retries(retries),
      m_timings(timings), m_settings(settings),
      m_encoder(relativeValidity(settings.validityPeriod), std::move(encode)),
      m_outbox(store, timings, clock.time()),
      m_device(store, modem, clock, m_outbox, m_state, retries, timings, settings),
      m_runPace(timings.run), m_runFor(clock.time()), m_runLate(clock.time()), m_wake(clock.time()),
      m_pruner(store, clock, settings.keepDays, timings.pruning)
{
    connect(&m_runLate, &Timer::timeout, this, [this] {
        m_runPace.forget();
        commit({});
    });
    connect(&m_wake, &Timer::timeout, this, &Dispatcher::work);

    connect(&m_device, &DeviceKeeper::deviceInfo, this, &Dispatcher::deviceInfo);
    connect(&m_device, &DeviceKeeper::changed, this, &Dispatcher::work);
    connect(&m_device, &DeviceKeeper::steady, this, [this] {
        // What becomes of the part in progress belongs to the fault.
        if (m_current)
            m_device.awaitSteadiness();
        else
            m_device.endFault();
    });

    connect(&m_outbox, &Outbox::queueChanged, this, &Dispatcher::queueChanged);
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

    connect(&modem, &Modem::partAccepted, this, &Dispatcher::onPartAccepted);
    connect(&modem, &Modem::partFailed, this, &Dispatcher::onPartFailed);
}

void Dispatcher::resume()
{
    const bool run = m_store.isToRun();
    m_device.recallReset();
    m_state.running = run;
    m_release = !m_state.running;
    if (m_state.running)
        Q_EMIT statusChanged(status());
    if (mayBeInterrupted())
        reportInterrupted();
    else
        QMetaObject::invokeMethod(this, &Dispatcher::work, Qt::QueuedConnection);
}

bool Dispatcher::mayBeInterrupted() const
{
    try {
        return !m_store.interrupted().isEmpty();
    } catch (const StoreFailure &) {
        return true; // found out when the store can be read
    }
}

void Dispatcher::reportInterrupted()
{
    struct Report
    {
        QList<StoredMessage> messages;
        QList<qint64> outcomes;
    };
    const auto report = std::make_shared<Report>();
    commit({[this, report] {
                *report = {m_store.interrupted(), {}};
                for (const StoredMessage &message : report->messages)
                    report->outcomes
                        << m_store.finish(message.id, ErrorCode::NoRespond, std::nullopt,
                                          m_clock.wallClockText(), false);
            },
            [this, report] {
                for (qsizetype i = 0; i < report->messages.size(); ++i)
                    m_outbox.reportFailed(report->messages.at(i), report->outcomes.at(i),
                                          ErrorCode::NoRespond);
            }});
}

void Dispatcher::start()
{
    const DeviceSettings settings = m_store.deviceSettings();
    if (m_state.running && m_device.isInForce(settings))
        return;
    m_store.together([this] {
        m_store.setToRun(true);
        m_store.holdPartlySent();
    });
    m_device.putInForce(settings, DeviceKeeper::Reopening::IfChanged);
    m_state.running = true;
    Q_EMIT statusChanged(status());
    work();
}

void Dispatcher::stop()
{
    if (!m_state.running)
        return;
    m_store.setToRun(false);
    m_state.running = false;
    m_release = true;
    m_device.releaseTested();
    Q_EMIT statusChanged(status());
    work();
}

void Dispatcher::applySettings()
{
    m_device.putInForce(m_store.deviceSettings(), DeviceKeeper::Reopening::Always);
    work();
}

void Dispatcher::testDevice(TestAnswer answer)
{
    m_device.test(std::move(answer));
    work();
}

void Dispatcher::noticeQueueChange()
{
    Q_EMIT queueChanged();
    // Whoever changed the queue is answered first: what begins now has a commit and a line of its
    // own to wait for.
    QMetaObject::invokeMethod(this, &Dispatcher::work, Qt::QueuedConnection);
}

void Dispatcher::warnTooLate()
{
    Q_EMIT queueChanged();
    warn(ErrorCode::PhoneBusy,
         QStringLiteral("the change came too late for a message that is being sent or has left the "
                        "queue"));
}

void Dispatcher::finish()
{
    m_state.finishing = true;
    work();
}

void Dispatcher::work()
{
    if (m_working || m_current)
        return;
    m_working = true;
    const auto leave = qScopeGuard([this] { m_working = false; });

    if (!m_device.mayClose())
        return;
    if (m_state.finishing) {
        if (m_outbox.isEmpty())
            leaveAll();
        return;
    }
    if (!m_state.running && m_release && m_outbox.isEmpty())
        releaseMessages();
    if (m_device.keep() && m_outbox.isEmpty())
        sendFirst();
}

void Dispatcher::leaveAll()
{
    m_device.shutDown();
    Q_EMIT finished();
}

void Dispatcher::releaseMessages()
{
    try {
        m_store.releaseBetweenParts();
        m_release = false;
        m_unfinished = 0;
    } catch (const StoreFailure &failure) {
        qWarning() << "messages in progress could not be released:" << failure.text();
        noticeStoreFailure(failure);
        m_wake.start(m_timings.storeAgainMs);
    }
}

QList<Dispatcher::Warning> Dispatcher::standingTroubles() const
{
    QList<Warning> troubles;
    if (m_state.running && m_device.fault().code != 0)
        troubles.append(m_device.fault());
    if (const QString fault = m_outbox.storeMonitor().fault(); !fault.isEmpty())
        troubles.append({ErrorCode::MapFile, fault});
    return troubles;
}

void Dispatcher::storeReplaced()
{
    m_device.forgetSettings();
    m_refused.clear();
    m_unfinished = 0;
    m_release = false;
    if (std::exchange(m_state.running, false))
        Q_EMIT statusChanged(status());
    Q_EMIT queueChanged();
    work();
}
