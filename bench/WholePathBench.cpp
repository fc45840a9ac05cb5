// The whole path: bus calls, and messages through the engine process to the simulated device.
// Starts both in a sandbox of its own; to be run under dbus-run-session.

#include "BenchSize.h"

#include "NorvaneSMS/engine/SMSManagerProxy.h"
#include "contract/BusTypes.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

void figure(const char *what, double value, const char *unit)
{
    out() << what << ": " << QString::number(value, 'f', 2) << ' ' << unit << Qt::endl;
}

int linesIn(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? static_cast<int>(file.readAll().count('\n')) : 0;
}

QDateTime due()
{
    return {QDate(2020, 1, 1), QTime(0, 0), Qt::UTC};
}

QDateTime later()
{
    return {QDate(2100, 1, 1), QTime(0, 0), Qt::UTC};
}

void measureCalls(SMSManager &engine)
{
    const int calls = benchSize(2000);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < calls; ++i)
        engine.GetEngineStatus();
    figure("a bus call", static_cast<double>(timer.nsecsElapsed()) / calls / 1000, "us");

    const int additions = benchSize(500);
    timer.start();
    for (int i = 0; i < additions; ++i)
        engine.AddSMS(u"912345678"_s, u"Hola"_s, later());
    figure("AddSMS, on disk when it returns",
           static_cast<double>(timer.nsecsElapsed()) / additions / 1000, "us");
    engine.ClearQueue();

    SMSList list;
    const int rows = benchSize(10'000);
    for (int i = 0; i < rows; ++i)
        list.Add(u"912345678"_s, u"Su pedido está listo para recoger."_s);
    timer.start();
    engine.AddSMSList(list, later());
    figure("AddSMSList of 10,000", static_cast<double>(timer.nsecsElapsed()) / 1e6, "ms");
    timer.start();
    engine.GetQueue();
    figure("GetQueue of 10,000 rows", static_cast<double>(timer.nsecsElapsed()) / 1e6, "ms");
    engine.ClearQueue();
}

void waitForLines(const QString &log, int lines)
{
    QTimer alarm; // between two looks
    alarm.start(2);
    while (linesIn(log) < lines)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

void measureLatency(SMSManager &engine, const QString &log)
{
    // The first message ends the talk that opens the device.
    engine.StartEngine();
    engine.AddSMS(u"912345678"_s, u"Hola"_s, due());
    waitForLines(log, 1);
    std::vector<double> taken;
    const int rounds = benchSize(200);
    for (int i = 0; i < rounds; ++i) {
        const int before = linesIn(log);
        QElapsedTimer timer;
        timer.start();
        engine.AddSMS(u"912345678"_s, u"Hola"_s, due());
        while (linesIn(log) == before)
            QCoreApplication::processEvents();
        taken.push_back(static_cast<double>(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(taken.begin(), taken.end());
    figure("from AddSMS to the device's acceptance, median", taken[taken.size() / 2], "ms");
    figure("from AddSMS to the device's acceptance, 95 of 100", taken[taken.size() * 95 / 100],
           "ms");
}

/// With a console that hears of each message.
void measureThroughput(SMSManager &engine, const QString &log)
{
    const int messages = benchSize(5000);
    SMSList list;
    for (int i = 0; i < messages; ++i)
        list.Add(u"912345678"_s, u"Su pedido %1 está listo."_s.arg(i));
    const int before = linesIn(log);
    QElapsedTimer timer;
    timer.start();
    engine.AddSMSList(list, due());
    waitForLines(log, before + messages);
    figure("messages through the engine, every commit durable, with a console listening",
           messages * 1e9 / static_cast<double>(timer.nsecsElapsed()), "a second");
}

} // namespace

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    const QTemporaryDir sandbox;
    qputenv("XDG_DATA_HOME", QFile::encodeName(sandbox.filePath(u"data"_s)));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(sandbox.filePath(u"config"_s)));
    const QCoreApplication application(argc, argv);
    const QString bin = QStringLiteral(NORVANE_BIN_DIR);
    const QString log = sandbox.filePath(u"log"_s);
    const QString link = sandbox.filePath(u"gsm"_s);

    QProcess simulator;
    simulator.start(bin + u"/gsm-simulator"_s, {u"--link"_s, link, u"--log"_s, log});
    simulator.waitForReadyRead(10'000);
    QProcess::execute(bin + u"/TovekSMService"_s, {u"--device"_s, link + u", 115200"_s});

    ProcessEngineLauncher launcher(QDBusConnection::sessionBus(), bin + u"/TovekSMService"_s,
                                   Bus::callTimeout);
    {
        SMSManagerProxy engine(launcher);
        measureCalls(engine);
        measureLatency(engine, log);
        measureThroughput(engine, log);
    }
    simulator.terminate();
    simulator.waitForFinished();
    return 0; // the engine ends with its bus
}
