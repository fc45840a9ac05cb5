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
      m_outbox(store, timings, clock.time()), m_runPace(timings.run), m_runFor(clock.time()),
      m_runLate(clock.time()), m_wake(clock.time()), m_resetAgain(clock.time()),
      m_openAgain(clock.time()), m_steady(clock.time()), m_conditionAgain(clock.time()),
      m_testLimit(clock.time()), m_keepTested(clock.time()),
      m_pruner(store, clock, settings.keepDays, timings.pruning)
{
    connect(&m_runLate, &Timer::timeout, this, [this] {
        m_runPace.forget();
        commit({});
    });
    connect(&m_wake, &Timer::timeout, this, &Dispatcher::work);
    connect(&m_openAgain, &Timer::timeout, this, &Dispatcher::work);
    connect(&m_steady, &Timer::timeout, this, &Dispatcher::onSteady);
    connect(&m_conditionAgain, &Timer::timeout, this, [this] {
        m_conditionDue = true;
        work();
    });
    connect(&m_testLimit, &Timer::timeout, this, [this] {
        failTests(ErrorCode::NoRespond, QStringLiteral("the test took too long"));
        work(); // nobody waits for the device any more
    });
    connect(&m_keepTested, &Timer::timeout, this, &Dispatcher::work);

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

    connect(&modem, &Modem::ready, this, &Dispatcher::onReady);
    connect(&modem, &Modem::failed, this, &Dispatcher::onFailed);
    connect(&modem, &Modem::pinSettled, this, &Dispatcher::work);
    connect(&modem, &Modem::functionalityReset, this, &Dispatcher::noteReset);
    connect(&modem, &Modem::detailsChanged, this, &Dispatcher::onCondition);
    connect(&modem, &Modem::tested, this, &Dispatcher::onTested);
    connect(&modem, &Modem::partAccepted, this, &Dispatcher::onPartAccepted);
    connect(&modem, &Modem::partFailed, this, &Dispatcher::onPartFailed);
}

void Dispatcher::resume()
{
    const bool run = m_store.isToRun();
    recallReset();
    m_running = run;
    m_release = !m_running;
    if (m_running)
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
    if (m_running && m_inForce == settings)
        return;
    m_store.together([this] {
        m_store.setToRun(true);
        m_store.holdPartlySent();
    });
    m_applySettings = m_applySettings || (m_inForce && *m_inForce != settings);
    m_inForce = settings;
    m_running = true;
    endTrouble();
    Q_EMIT statusChanged(status());
    work();
}

void Dispatcher::stop()
{
    if (!m_running)
        return;
    m_store.setToRun(false);
    m_running = false;
    m_release = true;
    m_keepTested.stop();
    Q_EMIT statusChanged(status());
    work();
}

void Dispatcher::applySettings()
{
    m_inForce = m_store.deviceSettings();
    m_applySettings = true;
    endTrouble();
    work();
}

void Dispatcher::testDevice(TestAnswer answer)
{
    m_tests.append(std::move(answer));
    if (!m_testLimit.isActive())
        m_testLimit.start(m_timings.testAnswerMs);
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
    m_finishing = true;
    work();
}

void Dispatcher::work()
{
    if (m_working || m_current)
        return;
    m_working = true;
    const auto leave = qScopeGuard([this] { m_working = false; });

    // Closed now, the device's word about its PIN would never be heard, and the PIN stay on record
    // as one that must not be tried again.
    if (m_modem.awaitsPinOutcome())
        return;
    if (m_finishing) {
        if (m_outbox.isEmpty())
            leaveAll();
        return;
    }
    if (!m_running && m_release && m_outbox.isEmpty())
        releaseMessages();
    // A test on its way is not cut off by new settings.
    if (m_modem.state() != Modem::State::Busy && std::exchange(m_applySettings, false)) {
        m_knownDevice.reset();
        closeDevice();
    }

    switch (m_modem.state()) {
    case Modem::State::Opening:
    case Modem::State::Initialising:
        if (!m_running && m_tests.isEmpty())
            closeDevice();
        return;
    case Modem::State::Busy:
        return;
    case Modem::State::Closed:
        if (mayOpen())
            openDevice();
        return;
    case Modem::State::Ready:
        useDevice();
        return;
    }
}

void Dispatcher::leaveAll()
{
    closeDevice();
    failTests(ErrorCode::PortClosed, QStringLiteral("the engine is ending"));
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
    if (m_running && m_deviceTrouble.code != 0)
        troubles.append(m_deviceTrouble);
    if (const QString fault = m_outbox.storeMonitor().fault(); !fault.isEmpty())
        troubles.append({ErrorCode::MapFile, fault});
    return troubles;
}

void Dispatcher::storeReplaced()
{
    m_inForce.reset();
    m_knownDevice.reset();
    m_refused.clear();
    m_unfinished = 0;
    m_release = false;
    m_applySettings = true;
    endTrouble();
    if (std::exchange(m_running, false))
        Q_EMIT statusChanged(status());
    Q_EMIT queueChanged();
    work();
}
