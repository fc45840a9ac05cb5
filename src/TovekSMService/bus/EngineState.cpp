#include "TovekSMService/bus/EngineState.h"

#include "TovekSMService/dispatch/Dispatcher.h"
#include "contract/ErrorCodes.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

void addText(QVariantMap &state, const char *name, const QString &text)
{
    if (!text.isEmpty())
        state.insert(QLatin1String(name), text);
}

void addPercent(QVariantMap &state, const char *name, int percent)
{
    if (percent >= 0)
        state.insert(QLatin1String(name), percent);
}

void addDevice(QVariantMap &state, const DeviceDetails &device)
{
    addText(state, "manufacturer", device.manufacturer);
    addText(state, "model", device.model);
    addText(state, "imei", device.imei);
    addText(state, "network", device.networkInfo);
    addPercent(state, "signal", device.signal);
    addPercent(state, "battery", device.battery);
}

StoreResult<> addCount(QVariantMap &state, const char *name, const StoreResult<int> &count)
{
    return count.map([&](int messages) { state.insert(QLatin1String(name), messages); });
}

StoreResult<> addMessages(QVariantMap &state, const Store &store)
{
    const Outcomes &outcomes = store.outcomes();
    return addCount(state, "delivered", outcomes.count(DeliveryState::Delivered))
        .and_then([&] { return outcomes.count(DeliveryState::Refused); })
        .and_then([&](int refused) {
            return addCount(state, "undelivered",
                            outcomes.count(DeliveryState::Unknown).map([refused](int unknown) {
                                return refused + unknown;
                            }));
        })
        .and_then([&] { return addCount(state, "unread", store.received().unread()); });
}

/// What can be read before a failure is added all the same.
StoreResult<> addStore(QVariantMap &state, const Store &store)
{
    state.insert(u"queue"_s, store.queue().size());
    return store.queue()
        .firstDue()
        .and_then([&](const std::optional<QString> &due) {
            addText(state, "oldestDue", due.value_or(QString()));
            return store.settings().deviceSettings();
        })
        .and_then([&](const DeviceSettings &settings) {
            addText(state, "parameter", settings.Parameter);
            return store.outcomes().lastFailure();
        })
        .and_then([&](const std::optional<LastFailure> &failure) {
            if (failure) {
                state.insert(u"failureCode"_s, failure->code);
                addText(state, "failureAt", failure->at);
            }
            return addMessages(state, store);
        });
}

QStringList storeFault(const Store &store)
{
    switch (store.database().access()) {
    case StoreDatabase::Access::None:
        return {store.isShared() ? u"the database can't be reached"_s : u"the store is not open"_s};
    case StoreDatabase::Access::Reading:
        return {u"the store can't be written"_s};
    case StoreDatabase::Access::Whole:
        break;
    }
    return {};
}

} // namespace

QVariantMap EngineState::ofRunning(const Store &store, const Dispatcher &dispatcher,
                                   const std::optional<LastError> &lastError)
{
    QVariantMap state;
    QStringList fault = storeFault(store);
    if (const StoreResult<> added = addStore(state, store); !added && fault.isEmpty())
        fault << u"the store: "_s + added.error().text();
    state.insert(u"status"_s, dispatcher.status());
    if (fault.isEmpty() && !dispatcher.storeFault().isEmpty())
        fault << u"the store: "_s + dispatcher.storeFault();
    if (dispatcher.knownDevice())
        addDevice(state, *dispatcher.knownDevice());
    if (lastError) {
        state.insert(u"errorCode"_s, lastError->code);
        state.insert(u"errorText"_s, lastError->text);
        state.insert(u"errorAt"_s, lastError->at);
    }
    for (const Dispatcher::Warning &standing : dispatcher.activeFaults()) {
        if (standing.code != ErrorCode::mapFile) // the store's is among them already
            fault << u"the device: %1 %2"_s.arg(standing.code).arg(standing.text);
    }
    state.insert(u"trouble"_s, fault);
    return state;
}

StoreResult<QVariantMap> EngineState::ofStore(const Store &store)
{
    QVariantMap state;
    return addStore(state, store)
        .and_then([&] { return store.settings().isToRun(); })
        .map([&](bool isToRun) {
            state.insert(u"status"_s, isToRun ? 1 : 0);
            return state;
        });
}

} // namespace norvane
