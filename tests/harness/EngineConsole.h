#pragma once

#include "harness/Ledger.h"

#include <QDBusConnection>
#include <QObject>

namespace norvane {

/// Hears what an engine tells its consoles about messages.
class EngineConsole : public QObject
{
    Q_OBJECT

public:
    explicit EngineConsole(const QDBusConnection &bus);

    const QList<MessageOutcome> &failures() const { return m_failures; }
    /// The phones of messages that were told as sent.
    const QStringList &sent() const { return m_sent; }

private Q_SLOTS:
    void hearFailed(const QString &phone, const QString &text, int code);
    void hearSent(const QString &phone, const QString &text, int others);

private:
    QList<MessageOutcome> m_failures;
    QStringList m_sent;
};

} // namespace norvane
