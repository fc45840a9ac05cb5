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

void addStore(QVariantMap &state, const Store &store)
{
    state.insert(u"queue"_s, store.queue().size());
    addText(state, "oldestDue", store.queue().firstDue().value_or(QString()));
    addText(state, "parameter", store.settings().deviceSettings().Parameter);
    if (const std::optional<LastFailure> failure = store.outcomes().lastFailure()) {
        state.insert(u"failureCode"_s, failure->code);
        addText(state, "failureAt", failure->at);
    }
}

QStringList storeFault(const Store &store)
{
    switch (store.database().access()) {
    case StoreDatabase::Access::None:
        return {u"the store is not open"_s};
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
    try {
        addStore(state, store);
    } catch (const StoreFailure &failure) {
        if (fault.isEmpty())
            fault << u"the store: "_s + failure.text();
    }
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

QVariantMap EngineState::ofStore(const Store &store)
{
    QVariantMap state;
    addStore(state, store);
    state.insert(u"status"_s, store.settings().isToRun() ? 1 : 0);
    return state;
}

} // namespace norvane
