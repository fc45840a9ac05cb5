#include "harness/EngineConsole.h"

#include "contract/BusTypes.h"

namespace norvane {

using namespace Qt::StringLiterals;

EngineConsole::EngineConsole(const QDBusConnection &bus)
{
    const auto hear = [&](const QString &signal, const char *slot) {
        QDBusConnection(bus).connect(QLatin1String(Bus::serviceName),
                                     QLatin1String(Bus::objectPath),
                                     QLatin1String(Bus::interfaceName), signal, this, slot);
    };
    hear(u"SMSSentFailed"_s, SLOT(hearFailed(QString, QString, int)));
    hear(u"SMSSent"_s, SLOT(hearSent(QString, QString, int)));
}

void EngineConsole::hearFailed(const QString &phone, const QString & /*text*/, int code)
{
    m_failures.append({phone, code});
}

void EngineConsole::hearSent(const QString &phone, const QString & /*text*/, int /*others*/)
{
    m_sent.append(phone);
}

} // namespace norvane
