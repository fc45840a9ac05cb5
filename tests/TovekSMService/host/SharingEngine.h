#pragma once

#include "TovekSMService/host/EngineProcess.h"
#include "gsm-simulator/RunningSimulator.h"

#include <QObject>
#include <QProcess>
#include <QStringList>

namespace norvane {

using namespace Qt::StringLiterals;

/// Hears the events of one engine, as "Name argument argument".
class EngineListener : public QObject
{
    Q_OBJECT

public:
    explicit EngineListener(const QString &busName);

    QStringList heard;

private Q_SLOTS:
    void hear(const QDBusMessage &event);
};

/// One of the engines that share the queue: its program, with a simulated device.
class SharingEngine
{
public:
    /// @param name  of the engine of its user; empty for the unnamed one
    SharingEngine(const QString &name, const QString &database, const QStringList &simulator,
                  const QByteArray &more = {});
    ~SharingEngine();

    void writeSettings(const QString &database, const QByteArray &more = {}) const;
    QString settingsFile() const;
    QString label() const { return m_name.isEmpty() ? u"first"_s : m_name; }
    QString busName() const
    {
        return m_name.isEmpty() ? u"com.tovek.SMService"_s : u"com.tovek.SMService."_s + m_name;
    }
    bool isUp() const;

    void start();
    void kill();
    void stop();
    void suspend();
    void resume();

    QDBusMessage call(const char *operation, const QVariantList &arguments = {}) const;
    /// What the history's window asks for.
    QDBusMessage ask(const char *operation, const QVariantList &arguments) const;
    /// A call of the history's window.
    QDBusMessage question(const char *operation, const QVariantList &arguments) const;
    int queueSize() const { return call("GetQueueSize").arguments().value(0).toInt(); }
    QDBusMessage add(const QString &text) const
    {
        return call("AddSMS", {u"600111222"_s, text, u"2020-01-01T00:00:00"_s});
    }
    void addMany(int messages, const QString &prefix) const;
    Ended run(const QStringList &options) const;

    QStringList received() const;
    bool isSubmitting() const;
    bool hears(const QString &event);
    const QStringList &heard() const { return m_listener.heard; }
    /// How often an event was heard.
    qsizetype count(const QString &event) const { return m_listener.heard.count(event); }
    static QString program() { return QStringLiteral(NORVANE_BIN_DIR "/TovekSMService"); }

private:
    QDBusMessage message(const char *interface, const char *operation,
                         const QVariantList &arguments) const;
    QStringList arguments() const
    {
        return m_name.isEmpty() ? QStringList() : QStringList{u"--name"_s, m_name};
    }

    const QString m_name;
    RunningSimulator m_device;
    EngineListener m_listener;
    QProcess m_process;
};

} // namespace norvane
