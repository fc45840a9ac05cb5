#include "TovekSMService/admin/StatusReport.h"

#include "TovekSMService/admin/ExitCodes.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace norvane {

using namespace Qt::StringLiterals;

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
    QJsonObject error{{u"code"_s, valueOf(state, code)}, {u"at"_s, valueOf(state, at)}};
    if (text)
        error.insert(u"text"_s, valueOf(state, text));
    return error;
}

StatusReport reportOf(const QString &engine, int exitCode, const QVariantMap &state,
                      const QStringList &fault)
{
    const QJsonObject device{
        {u"parameter"_s, valueOf(state, "parameter")},
        {u"manufacturer"_s, valueOf(state, "manufacturer")},
        {u"model"_s, valueOf(state, "model")},
        {u"imei"_s, valueOf(state, "imei")},
        {u"network"_s, valueOf(state, "network")},
        {u"battery"_s, valueOf(state, "battery")},
    };
    const QJsonObject status = state.contains(u"status"_s)
                                   ? QJsonObject{{u"toRun"_s, state.value(u"status"_s) == 1}}
                                   : QJsonObject{{u"toRun"_s, QJsonValue()}};
    QJsonObject report = status;
    report.insert(u"engine"_s, engine);
    report.insert(u"queue"_s, valueOf(state, "queue"));
    report.insert(u"oldestDue"_s, valueOf(state, "oldestDue"));
    for (const char *const count : {"delivered", "undelivered", "unread"})
        report.insert(QLatin1String(count), valueOf(state, count));
    report.insert(u"signal"_s, valueOf(state, "signal"));
    report.insert(u"device"_s, device);
    report.insert(u"lastError"_s, occurrence(state, "errorCode", "errorText", "errorAt"));
    report.insert(u"lastFailed"_s, occurrence(state, "failureCode", nullptr, "failureAt"));
    report.insert(u"trouble"_s, QJsonArray::fromStringList(fault));
    return {QJsonDocument(report).toJson(), exitCode};
}

} // namespace

StatusReport StatusReport::ofRunning(const QVariantMap &state)
{
    const bool isRunning = state.value(u"status"_s) == 1;
    const QStringList fault = state.value(u"trouble"_s).toStringList();
    const int calm = isRunning ? ExitCode::engineRunning : ExitCode::engineStopped;
    return reportOf(isRunning ? u"running"_s : u"stopped"_s,
                    fault.isEmpty() ? calm : ExitCode::engineFaulty, state, fault);
}

StatusReport StatusReport::ofNone(const QVariantMap &state)
{
    return reportOf(u"not up"_s, ExitCode::engineNotUp, state, {});
}

StatusReport StatusReport::fromFault(const QString &fault)
{
    return reportOf(u"unknown"_s, ExitCode::engineFaulty, {}, {fault});
}

} // namespace norvane
