#pragma once

#include "support/WaitUntil.h"

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QProcess>

#include <gtest/gtest.h>

#include <functional>

namespace norvane {

// The engine's program as a stranger sees it: over the bus and by its command line. The records are
// declared anew here, so that both declarations prove each other.

struct WireSettings
{
    int type = 0;
    QString pin;
    int mode = 0;
    int protocol = 0;
    QString parameter;

    bool operator==(const WireSettings &) const = default;
};

struct WireEntry
{
    QString phone;
    QString text;
};

struct WireRow
{
    QString date;
    QString phone;
    QString text;
    qlonglong id = 0;

    bool operator==(const WireRow &) const = default;
};

QDBusArgument &operator<<(QDBusArgument &argument, const WireSettings &settings);
const QDBusArgument &operator>>(const QDBusArgument &argument, WireSettings &settings);
QDBusArgument &operator<<(QDBusArgument &argument, const WireEntry &entry);
const QDBusArgument &operator>>(const QDBusArgument &argument, WireEntry &entry);
QDBusArgument &operator<<(QDBusArgument &argument, const WireRow &row);
const QDBusArgument &operator>>(const QDBusArgument &argument, WireRow &row);

/// Notes an engine's events on one connection, as "Name argument argument".
class Listener : public QObject
{
    Q_OBJECT

public:
    /// @param service  of the engine
    explicit Listener(const QDBusConnection &bus,
                      const QString &service = QStringLiteral("com.tovek.SMService"));

    /// Whether an event was heard that begins so.
    bool has(const QString &beginning) const;

    QStringList heard;

private Q_SLOTS:
    void hear(const QDBusMessage &event);
};

/// What a run of the program gave.
struct Ended
{
    int exitCode = -1;
    QString out;
    QString err;
};

class EngineProcess : public testing::Test
{
protected:
    EngineProcess();
    ~EngineProcess() override;

    static QString program();
    /// The engine's folder, and the store in it.
    static QString folder();
    static QString storeFile();
    /// Who may do what with a file or folder, as 0600.
    static unsigned rightsOf(const QString &path);

    /// Starts the engine and waits until it is on the bus.
    void start();
    /// Ends it.
    void stop();
    /// Ends it as a crash would.
    void kill();
    static bool isOnBus(const QDBusConnection &bus = QDBusConnection::sessionBus());

    /// Runs the program to its end.
    static Ended
    run(const QStringList &arguments,
        const QProcessEnvironment &environment = QProcessEnvironment::systemEnvironment());

    static QDBusMessage request(const char *operation, const QVariantList &arguments = {});
    /// Calls the engine, and fails the test if that fails.
    static QDBusMessage call(const char *operation, const QVariantList &arguments = {},
                             const QDBusConnection &bus = QDBusConnection::sessionBus());
    static int callForNumber(const char *operation);
    static void addSMS(const QString &phone, const QString &text, const QString &date);
    static QList<WireRow> queue();
    static WireSettings settings();
    static bool setSettings(const WireSettings &settings);
    /// A device that is nowhere.
    static WireSettings noDevice();

    static bool until(const std::function<bool()> &condition) { return waitUntil(condition); }

    QProcess m_engine;
};

} // namespace norvane

Q_DECLARE_METATYPE(norvane::WireSettings)
Q_DECLARE_METATYPE(norvane::WireEntry)
Q_DECLARE_METATYPE(norvane::WireRow)
