#include "TovekSMService/dispatch/EnginePresence.h"

#include "TovekSMService/dispatch/DeviceKeeper.h"
#include "TovekSMService/dispatch/DispatcherTimings.h"
#include "TovekSMService/dispatch/Outbox.h"
#include "TovekSMService/dispatch/RunState.h"
#include "TovekSMService/log/Categories.h"
#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/QueueNews.h"
#include "TovekSMService/store/SharedQueue.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"
#include "contract/ErrorCodes.h"

#include <cstdlib>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

EnginePresence::EnginePresence(Store &store, const Clock &clock, Outbox &outbox,
                               const DeviceKeeper &device, const RunState &state,
                               const DispatcherTimings &timings)
    : m_store(store), m_clock(clock), m_outbox(outbox), m_device(device), m_state(state),
      m_lifeMs(timings.lifeMs), m_newsMs(timings.newsMs), m_life(clock.time()), m_news(clock.time())
{
    if (!store.isShared())
        return;
    connect(&m_life, &Timer::timeout, this, &EnginePresence::showLife);
    connect(&m_news, &Timer::timeout, this, &EnginePresence::announceNews);
    PostgresDatabase &database = *store.sharedDatabase();
    database.limitCalls(timings.callMs);
    database.onOpened([this] { return onOpened(); });
    database.onNotified([this](const QStringList &news) { takeNews(news); });
    m_life.start(m_lifeMs);
}

StoreResult<> EnginePresence::onOpened()
{
    return m_store.queue().load().and_then([this] { return tryShowLife(); }).map([this] {
        m_news.start(0);       // what was not passed on before
        m_isSizeAsked = false; // who was asked is gone
        m_taken = {};
        m_outbox.reportQueueChange();
        QMetaObject::invokeMethod(
            this,
            [this] {
                Q_EMIT opened();
                Q_EMIT changed();
            },
            Qt::QueuedConnection);
    });
}

void EnginePresence::showLife()
{
    m_life.start(m_lifeMs);
    if (m_store.database().access() != StoreDatabase::Access::Whole) {
        // Whoever has nothing to do hears of it too.
        m_outbox.noteStoreFailure(m_store.sharedDatabase()->openFailure().value_or(
            StoreFailure(StoreFailure::Kind::Away, u"the database can't be reached"_s)));
        return;
    }
    if (const StoreResult<> shown = tryShowLife(); !shown)
        m_outbox.noteStoreFailure(shown.error());
    else
        Q_EMIT changed(); // what was left to other engines may be due for this one
}

StoreResult<> EnginePresence::tryShowLife()
{
    return m_store.settings()
        .deviceSettings()
        .and_then([this](const DeviceSettings &settings) {
            return m_store.engines()->showLife(settings.Parameter, deviceState());
        })
        .and_then([this](bool isAlive) {
            if (!isAlive)
                m_store.sharedQueue()->noteEpochEnded();
            return checkClock();
        })
        .and_then([this] { return m_store.sharedQueue()->checkSize(); })
        .map([this](bool isChanged) {
            if (isChanged)
                m_outbox.reportQueueChange();
        })
        .and_then([this] { return takeOver(); });
}

QString EnginePresence::deviceState() const
{
    if (!m_state.running || m_state.finishing)
        return u"stopped"_s;
    return m_device.fault().code != 0 || isHeldBack() ? u"fault"_s : u"running"_s;
}

/// Dates have no zone: where the clocks differ, so do the moments at which messages are due.
StoreResult<> EnginePresence::checkClock()
{
    return m_store.engines()->clockDifference(m_clock.wallClockText()).map([this](qint64 ahead) {
        m_store.sharedDatabase()->allowChores(std::abs(ahead) <= maxClockDifference);
        if (std::abs(ahead) <= maxClockDifference) {
            m_fault.clear();
            return;
        }
        const bool isNew = !isHeldBack();
        m_fault = u"this computer's clock or time zone is %1 s off the database's; nothing is sent "
                  "until they agree"_s.arg(ahead);
        if (isNew)
            m_outbox.warn(ErrorCode::fail, m_fault);
    });
}

StoreResult<> EnginePresence::takeOver()
{
    return m_store.engines()
        ->takeOver(ErrorCode::noRespond, m_clock.wallClockText())
        .and_then([this](const QList<TakenOver> &taken) -> StoreResult<> {
            if (taken.isEmpty())
                return {};
            QList<qint64> ids;
            for (const TakenOver &each : taken)
                ids.append(each.message);
            return m_store.sharedQueue()->noteTakenOver(ids).map([&] { report(taken); });
        });
}

void EnginePresence::report(const QList<TakenOver> &taken)
{
    for (const TakenOver &each : taken) {
        qCWarning(logDispatch).noquote()
            << "an engine is silent, and what it was sending is in doubt:" << each.engine;
        StoredMessage message;
        message.phone = each.phone;
        message.text = each.text;
        m_outbox.reportFailed(message, each.outcome, ErrorCode::noRespond);
    }
}

void EnginePresence::passOnNews()
{
    if (m_store.isShared() && m_store.sharedQueue()->hasNews() && !m_news.isActive())
        m_news.start(m_newsMs);
}

void EnginePresence::passOnHistoryChange()
{
    m_hasHistoryChanged = m_store.isShared();
    if (m_hasHistoryChanged && !m_news.isActive())
        m_news.start(m_newsMs);
}

/// Nobody waits for the server meanwhile: messages may be on their way to the device.
void EnginePresence::announceNews()
{
    if (m_store.database().access() != StoreDatabase::Access::Whole)
        return;
    m_store.sharedQueue()->announceNews([this](const StoreResult<> &told) {
        if (!told)
            announceAgain(told.error());
    });
    if (std::exchange(m_hasHistoryChanged, false))
        m_store.sharedQueue()->announceHistory([this](const StoreResult<> &told) {
            m_hasHistoryChanged = m_hasHistoryChanged || !told;
            if (!told)
                announceAgain(told.error());
        });
}

void EnginePresence::announceAgain(const StoreFailure &failure)
{
    m_outbox.noteStoreFailure(failure);
    if (!m_news.isActive())
        m_news.start(m_newsMs);
}

void EnginePresence::takeNews(const QStringList &news)
{
    if (news.contains(QueueNews::ofHistory())) {
        Q_EMIT historyChanged();
        if (news.count(QueueNews::ofHistory()) == news.size())
            return;
    }
    m_store.sharedQueue()->takeNews(news);
    m_taken.isSome = true;
    m_taken.isOfAll = m_taken.isOfAll || news.contains(QueueNews::ofAll());
    if (!m_isSizeAsked)
        passOnToConsoles();
}

/// What others tell while the size is asked for is passed on behind that.
void EnginePresence::passOnToConsoles()
{
    const News news = std::exchange(m_taken, {});
    m_isSizeAsked = true;
    m_store.sharedQueue()->refreshSize([this, news](const StoreResult<> &known) {
        m_isSizeAsked = false;
        if (!known)
            m_outbox.noteStoreFailure(known.error());
        m_outbox.reportQueueChange();
        if (news.isOfAll)
            Q_EMIT opened(); // failures may have come to this engine, too
        Q_EMIT changed();
        if (m_taken.isSome && !m_isSizeAsked)
            passOnToConsoles();
    });
}

} // namespace norvane
