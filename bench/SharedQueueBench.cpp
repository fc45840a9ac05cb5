// A queue in a database: how fast one engine and four send from it, with a device that answers at
// once and with one that takes its time, nearby and at a distance, and how long a claim takes in a
// long queue. Everything is durable. To be run under dbus-run-session.
//
//     shared_queue_bench [nearby|latency|distance|claims] [smallest]

#include "BenchSize.h"

#include "TovekSMService/store/PostgresDatabase.h"
#include "TovekSMService/store/SharedQueue.h"
#include "TovekSMService/store/Store.h"
#include "TovekSMService/time/Clock.h"
#include "gsm-simulator/RunningSimulator.h"
#include "support/PostgresProxy.h"
#include "support/PostgresServer.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTextStream>
#include <QThread>

#include <algorithm>
#include <array>
#include <memory>
#include <vector>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

constexpr auto nearby = "nearby"_L1;
constexpr auto latency = "latency"_L1;
constexpr auto distance = "distance"_L1;
constexpr auto claims = "claims"_L1;
constexpr std::array parts = {nearby, latency, distance, claims};

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

/// An engine with a name, and its simulated device. It isn't started yet.
class Engine
{
public:
    Engine(const QString &name, const QString &database, const QStringList &simulator)
        : m_name(name), m_device(simulator)
    {
        QFile settings(m_config + u"/TovekSMService@%1.ini"_s.arg(name));
        QDir().mkpath(m_config);
        if (settings.open(QIODevice::WriteOnly))
            settings.write("[Queue]\nDatabase=" + database.toUtf8() + "\nName=" + name.toUtf8() +
                           "\n[Reports]\nDelivery=false\n");
        settings.close();
        const QString program = QStringLiteral(NORVANE_BIN_DIR "/TovekSMService");
        QProcess::execute(program,
                          {u"--name"_s, name, u"--device"_s, m_device.link() + u", 115200"_s});
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(program, {u"--name"_s, name});
        while (!bus().interface()->isServiceRegistered(busName()))
            QThread::msleep(5);
    }
    ~Engine()
    {
        m_process.terminate();
        m_process.waitForFinished(-1);
    }
    Engine(const Engine &) = delete;
    Engine &operator=(const Engine &) = delete;

    void start() const
    {
        bus().call(QDBusMessage::createMethodCall(busName(), u"/com/tovek/SMService"_s,
                                                  u"com.tovek.SMService.SMSManager1"_s,
                                                  u"StartEngine"_s));
    }
    int sent()
    {
        if (m_log.isOpen() || m_log.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            m_sent += static_cast<int>(m_log.readAll().count('\n'));
        return m_sent;
    }

private:
    static QDBusConnection bus() { return QDBusConnection::sessionBus(); }
    QString busName() const { return u"com.tovek.SMService."_s + m_name; }

    const QString m_config = qEnvironmentVariable("XDG_CONFIG_HOME") + u"/Norvane"_s;
    const QString m_name;
    RunningSimulator m_device;
    QFile m_log{m_device.logPath()};
    int m_sent = 0;
    QProcess m_process;
};

void fill(const PostgresServer &server, const QString &database, int messages)
{
    server.sql(u"INSERT INTO message (delivery_date, original_date, due, phone, text) SELECT "
               "'2020-01-01T00:00:00', '2020-01-01T00:00:00', '2020-01-01T00:00:00', '912345678', "
               "'Su pedido ' || n || ' listo' FROM generate_series(1, %1) n"_s.arg(messages),
               database);
    server.sql(u"UPDATE engine SET queued = queued + %1 WHERE id = 1"_s.arg(messages), database);
}

/// How the engines reach the database.
struct Way
{
    QStringList simulator;
    std::chrono::microseconds delay{0}; ///< each way
};

double messagesASecond(PostgresServer &server, int engines, int messages, const Way &way)
{
    const QString database = u"bench"_s;
    QString conninfo = server.freshDatabase(database);
    std::unique_ptr<PostgresProxy> proxy;
    if (way.delay.count() > 0) {
        proxy = std::make_unique<PostgresProxy>(server.socketPath());
        proxy->setDelay(way.delay);
        conninfo = proxy->address() + u' ' + PostgresServer::login(database);
    }
    std::vector<std::unique_ptr<Engine>> all;
    for (int number = 1; number <= engines; ++number)
        all.push_back(std::make_unique<Engine>(u"e%1"_s.arg(number), conninfo, way.simulator));
    while (server.sql(u"SELECT to_regclass('engine') IS NOT NULL"_s, database)
                   .constFirst()
                   .constFirst() != "t"_L1 ||
           server.sql(u"SELECT count(*) FROM engine"_s, database).constFirst().constFirst() !=
               QString::number(engines))
        QThread::msleep(20);
    fill(server, database, messages);
    QElapsedTimer timer;
    timer.start();
    for (const auto &engine : all)
        engine->start();
    const auto sent = [&all] {
        int count = 0;
        for (const auto &engine : all)
            count += engine->sent();
        return count;
    };
    while (sent() < messages)
        QThread::usleep(500);
    return messages * 1e9 / static_cast<double>(timer.nsecsElapsed());
}

void compare(PostgresServer &server, const char *what, int each, const Way &way)
{
    const double one = messagesASecond(server, 1, each, way);
    const int many = 4;
    const double four = messagesASecond(server, many, many * each, way);
    out() << what << ": one engine " << QString::number(one, 'f', 1) << ", four "
          << QString::number(four, 'f', 1)
          << " messages a second: " << QString::number(four / one, 'f', 2) << " times" << Qt::endl;
}

/// A claim as the engine makes it: a transaction of two exchanges with the server.
void measureClaims(PostgresServer &server, int waiting, int number)
{
    const QString database = u"long"_s;
    const QTemporaryDir folder;
    const SystemClock clock;
    const SharedStore shared = {server.freshDatabase(database),
                                {u"bench"_s, u"bench"_s, u"bench"_s},
                                0,
                                [&clock](qint64 seconds) { return clock.wallClockText(seconds); }};
    Store store(folder.filePath(u"own.sqlite"_s), shared, clock.time());
    if (!store.open() || !store.sharedDatabase()->open() || !store.queue().load())
        qFatal("no store");
    fill(server, database, waiting);
    std::vector<double> milliseconds;
    for (int claim = 0; claim < number; ++claim) {
        QElapsedTimer timer;
        timer.start();
        const StoreResult<qint64> id = store.database().together([&] {
            return store.queue().first(1).and_then([&](const QList<StoredMessage> &first) {
                const qint64 message = first.constFirst().id;
                return store.queue().begin({{message, std::nullopt, "hash"}}).map([message] {
                    return message;
                });
            });
        });
        milliseconds.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
        if (!id || !store.queue().finishSent({{*id, 1, clock.wallClockText()}}))
            qFatal("no claim");
    }
    std::sort(milliseconds.begin(), milliseconds.end());
    out() << waiting << " messages wait: a claim, its commit flushed, takes "
          << QString::number(milliseconds.at(milliseconds.size() / 2), 'f', 2) << " ms, 99 of 100 "
          << QString::number(milliseconds.at(milliseconds.size() * 99 / 100), 'f', 2) << " ms"
          << Qt::endl;
}

} // namespace

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir sandbox;
    for (const char *const folder : {"CONFIG", "DATA"})
        qputenv(QByteArray("XDG_") + folder + "_HOME",
                QFile::encodeName(sandbox.filePath(QLatin1String(folder))));
    PostgresServer server(PostgresServer::Durability::Flushed);
    const QStringList arguments = QCoreApplication::arguments();
    const bool isAll = std::none_of(parts.begin(), parts.end(), [&](const QLatin1String &part) {
        return arguments.contains(part);
    });
    const auto isWanted = [&](const QLatin1String &part) {
        return isAll || arguments.contains(part);
    };
    if (isWanted(nearby))
        compare(server, "zero latency", benchSize(20'000, 5), {});
    if (isWanted(latency))
        compare(server, "--latency 50", benchSize(300, 2), {{u"--latency"_s, u"50"_s}});
    if (isWanted(distance))
        compare(server, "zero latency, 5 ms to the database and back", benchSize(4000, 5),
                {{}, std::chrono::microseconds(2500)});
    if (isWanted(claims))
        measureClaims(server, benchSize(1'000'000, 100), benchSize(1000, 3));
    return 0;
}
