#include "TovekSMService/admin/StatusReport.h"

#include "TovekSMService/admin/ExitCodes.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QJsonValue valueOf(const QVariantMap &state, const char *name)
{
    const QString key = QLatin1String(name);
    return state.contains(key) ? QJsonValue::fromVariant(state.value(key)) : QJsonValue();
}

QJsonValue occurrence(const QVariantMap &state, const char *code, const char *text, const char *at)
{
    if (!state.contains(QLatin1String(code)))
        return {};
    QJsonObject error{{QStringLiteral("code"), valueOf(state, code)},
                      {QStringLiteral("at"), valueOf(state, at)}};
    if (text)
        error.insert(QStringLiteral("text"), valueOf(state, text));
    return error;
}

StatusReport reportOf(const QString &engine, int exitCode, const QVariantMap &state,
                      const QStringList &trouble)
{
    const QJsonObject device{
        {QStringLiteral("parameter"), valueOf(state, "parameter")},
        {QStringLiteral("manufacturer"), valueOf(state, "manufacturer")},
        {QStringLiteral("model"), valueOf(state, "model")},
        {QStringLiteral("imei"), valueOf(state, "imei")},
        {QStringLiteral("network"), valueOf(state, "network")},
        {QStringLiteral("battery"), valueOf(state, "battery")},
    };
    const QJsonObject status =
        state.contains(QStringLiteral("status"))
            ? QJsonObject{{QStringLiteral("toRun"), state.value(QStringLiteral("status")) == 1}}
            : QJsonObject{{QStringLiteral("toRun"), QJsonValue()}};
    QJsonObject report = status;
    report.insert(QStringLiteral("engine"), engine);
    report.insert(QStringLiteral("queue"), valueOf(state, "queue"));
    report.insert(QStringLiteral("oldestDue"), valueOf(state, "oldestDue"));
    report.insert(QStringLiteral("signal"), valueOf(state, "signal"));
    report.insert(QStringLiteral("device"), device);
    report.insert(QStringLiteral("lastError"),
                  occurrence(state, "errorCode", "errorText", "errorAt"));
    report.insert(QStringLiteral("lastFailed"),
                  occurrence(state, "failureCode", nullptr, "failureAt"));
    report.insert(QStringLiteral("trouble"), QJsonArray::fromStringList(trouble));
    return {QJsonDocument(report).toJson(), exitCode};
}

} // namespace

StatusReport StatusReport::ofRunning(const QVariantMap &state)
{
    const bool isRunning = state.value(QStringLiteral("status")) == 1;
    const QStringList trouble = state.value(QStringLiteral("trouble")).toStringList();
    const int calm = isRunning ? ExitCode::EngineRunning : ExitCode::EngineStopped;
    return reportOf(isRunning ? QStringLiteral("running") : QStringLiteral("stopped"),
                    trouble.isEmpty() ? calm : ExitCode::EngineInTrouble, state, trouble);
}

StatusReport StatusReport::ofNone(const QVariantMap &state)
{
    return reportOf(QStringLiteral("not up"), ExitCode::EngineNotUp, state, {});
}

StatusReport StatusReport::ofTrouble(const QString &trouble)
{
    return reportOf(QStringLiteral("unknown"), ExitCode::EngineInTrouble, {}, {trouble});
}
