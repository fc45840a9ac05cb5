#include "TovekSMService/bus/EngineState.h"

#include "TovekSMService/dispatch/Dispatcher.h"
#include "contract/ErrorCodes.h"

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
    state.insert(QStringLiteral("queue"), store.size());
    addText(state, "oldestDue", store.firstDue().value_or(QString()));
    addText(state, "parameter", store.deviceSettings().Parameter);
    if (const std::optional<LastFailure> failure = store.lastFailure()) {
        state.insert(QStringLiteral("failureCode"), failure->code);
        addText(state, "failureAt", failure->at);
    }
}

QStringList storeTrouble(const Store &store)
{
    switch (store.access()) {
    case Store::Access::None:
        return {QStringLiteral("the store is not open")};
    case Store::Access::Reading:
        return {QStringLiteral("the store can't be written")};
    case Store::Access::Whole:
        break;
    }
    return {};
}

} // namespace

QVariantMap EngineState::ofRunning(const Store &store, const Dispatcher &dispatcher,
                                   const std::optional<LastError> &lastError)
{
    QVariantMap state;
    QStringList trouble = storeTrouble(store);
    try {
        addStore(state, store);
    } catch (const StoreFailure &failure) {
        if (trouble.isEmpty())
            trouble << QStringLiteral("the store: ") + failure.text();
    }
    state.insert(QStringLiteral("status"), dispatcher.status());
    if (trouble.isEmpty() && !dispatcher.storeTrouble().isEmpty())
        trouble << QStringLiteral("the store: ") + dispatcher.storeTrouble();
    if (dispatcher.knownDevice())
        addDevice(state, *dispatcher.knownDevice());
    if (lastError) {
        state.insert(QStringLiteral("errorCode"), lastError->code);
        state.insert(QStringLiteral("errorText"), lastError->text);
        state.insert(QStringLiteral("errorAt"), lastError->at);
    }
    for (const Dispatcher::Warning &standing : dispatcher.standingTroubles()) {
        if (standing.code != ErrorCode::MapFile) // the store's is among them already
            trouble << QStringLiteral("the device: %1 %2").arg(standing.code).arg(standing.text);
    }
    state.insert(QStringLiteral("trouble"), trouble);
    return state;
}

QVariantMap EngineState::ofStore(const Store &store)
{
    QVariantMap state;
    addStore(state, store);
    state.insert(QStringLiteral("status"), store.isToRun() ? 1 : 0);
    return state;
}
