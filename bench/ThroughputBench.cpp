// The engine against a bare loop that talks the same way to the same simulated device, and keeps
// nothing on disk: side by side, in turns. To be run under dbus-run-session.
//
//     throughput_bench [memory] [smallest]

#include "BenchSize.h"

#include "NorvaneSMS/engine/SMSManagerProxy.h"
#include "TovekSMService/modem/at/QtSerialPortLine.h"
#include "TovekSMService/modem/codec/SubmitPdu.h"
#include "TovekSMService/modem/device/AtModem.h"
#include "contract/BusTypes.h"
#include "gsm-simulator/RunningSimulator.h"

#include <QCoreApplication>
#include <QDBusConnectionInterface>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <QThread>

#include <algorithm>
#include <csignal>
#include <memory>
#include <vector>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

QString phone()
{
    return u"912345678"_s;
}

QString text(int number)
{
    return u"Su pedido %1 está listo."_s.arg(number, 6, 10, QLatin1Char('0'));
}

/// Counts the lines of a growing file without reading any of them twice.
class LineCount
{
public:
    explicit LineCount(const QString &path) : m_file(path) {}

    int lines()
    {
        if (m_file.isOpen() || m_file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            m_lines += static_cast<int>(m_file.readAll().count('\n'));
        return m_lines;
    }

private:
    QFile m_file;
    int m_lines = 0;
};

void waitForLines(LineCount &count, int lines)
{
    while (count.lines() < lines)
        QThread::usleep(500);
}

/// What one run over the line took.
struct Run
{
    double seconds = 0;
    qint64 bytes = 0; ///< in both directions, where they were counted
};

Run bareLoop(const QStringList &options, int messages)
{
    const RunningSimulator simulator(options);
    PortClient port(simulator.link());
    for (const char *const command : {"AT", "ATE0", "AT+CMEE=1", "AT+CMGF=0"})
        port.ask(command);
    Run run;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < messages; ++i) {
        const auto parts = encodeSubmit({phone(), text(i), 0, {}}).value();
        const SubmitPart &part = parts.constFirst();
        const QByteArray command = "AT+CMGS=" + QByteArray::number(part.length) + '\r';
        port.write(command);
        const QByteArray prompt = port.readUntil("> ");
        port.write(part.hex + '\x1A');
        const QByteArray answer = port.readUntil("OK\r\n");
        run.bytes += command.size() + prompt.size() + part.hex.size() + 1 + answer.size();
    }
    run.seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
    return run;
}

/// The engine's own talk with the device, with nothing behind it.
Run modemLoop(const QStringList &options, int messages)
{
    class OpenGate : public PinGate
    {
        Decision mayTry(const SimIdentity &, const QString &, std::optional<int>) override
        {
            return Decision::Try;
        }
        void accepted(const SimIdentity &, const QString &) override {}
        void refused(const SimIdentity &, const QString &) override {}
    };

    const RunningSimulator simulator(options);
    OpenGate gate;
    AtModem modem(std::make_unique<QtSerialPortLine>(), gate, ModemTimings());
    QEventLoop loop;
    QElapsedTimer timer;
    int sent = 0;
    const auto sendNext = [&] {
        modem.send(encodeSubmit({phone(), text(sent), 0, {}}).value().constFirst());
    };
    QObject::connect(&modem, &Modem::ready, &loop, [&] {
        timer.start();
        sendNext();
    });
    QObject::connect(&modem, &Modem::partAccepted, &loop, [&] {
        if (++sent == messages)
            loop.quit();
        else
            sendNext();
    });
    QObject::connect(&modem, &Modem::partFailed, &loop, [] { qFatal("a part was not taken"); });
    modem.open(PortParameter{simulator.link(), 115200}, QString());
    loop.exec();
    return {static_cast<double>(timer.nsecsElapsed()) / 1e9, 0};
}

/// Whether the network is asked to report what becomes of each message.
enum class Reports { Off, On };

/// An engine with a store of its own, which has a queue and isn't started yet.
class Engine
{
public:
    Engine(const RunningSimulator &simulator, int messages, Reports reports)
    {
        writeSettings(simulator.folder() + u"/config/Norvane"_s, reports);
        qputenv("XDG_DATA_HOME", QFile::encodeName(simulator.folder() + u"/data"_s));
        qputenv("XDG_CONFIG_HOME", QFile::encodeName(simulator.folder() + u"/config"_s));
        const QString program = QStringLiteral(NORVANE_BIN_DIR "/TovekSMService");
        QProcess::execute(program, {u"--device"_s, simulator.link() + u", 115200"_s});
        m_launcher = std::make_unique<ProcessEngineLauncher>(QDBusConnection::sessionBus(), program,
                                                             Bus::callTimeout);
        m_proxy = std::make_unique<SMSManagerProxy>(*m_launcher);
        add(messages);
        m_pid =
            QDBusConnection::sessionBus().interface()->servicePid(QLatin1String(Bus::serviceName));
    }

    ~Engine()
    {
        m_proxy.reset();
        ::kill(static_cast<pid_t>(m_pid), SIGTERM);
        while (QDBusConnection::sessionBus().interface()->isServiceRegistered(
            QLatin1String(Bus::serviceName)))
            QThread::msleep(5);
    }
    Engine(const Engine &) = delete;
    Engine &operator=(const Engine &) = delete;

    void add(int messages)
    {
        constexpr int maxListLength = 10'000;
        for (int first = 0; first < messages; first += maxListLength) {
            SMSList list;
            for (int i = first; i < std::min(messages, first + maxListLength); ++i)
                list.Add(phone(), text(i));
            m_proxy->AddSMSList(list, {QDate(2020, 1, 1), QTime(0, 0), Qt::UTC});
        }
    }

    /// From here on nobody listens to the engine.
    void startAlone()
    {
        m_proxy->StartEngine();
        m_proxy.reset();
    }

    /// Kilobytes that are the process's own, in memory.
    qint64 memory() const
    {
        QFile file(u"/proc/%1/status"_s.arg(m_pid));
        if (!file.open(QIODevice::ReadOnly))
            return 0;
        for (const QByteArray &line : file.readAll().split('\n'))
            if (line.startsWith("RssAnon:"))
                return line.simplified().split(' ').value(1).toLongLong();
        return 0;
    }

private:
    static void writeSettings(const QString &folder, Reports reports)
    {
        QDir().mkpath(folder);
        QFile file(folder + u"/TovekSMService.ini"_s);
        if (file.open(QIODevice::WriteOnly))
            file.write(reports == Reports::On ? "[Reports]\nDelivery=true\n"
                                              : "[Reports]\nDelivery=false\n");
    }

    std::unique_ptr<ProcessEngineLauncher> m_launcher;
    std::unique_ptr<SMSManagerProxy> m_proxy;
    uint m_pid = 0;
};

double engineSeconds(const QStringList &options, int messages, Reports reports)
{
    const RunningSimulator simulator(options);
    LineCount log(simulator.logPath());
    // The first message ends the talk that opens the device.
    constexpr int warmUp = 1;
    Engine engine(simulator, messages + warmUp, reports);
    engine.startAlone();
    waitForLines(log, warmUp);
    QElapsedTimer timer;
    timer.start();
    waitForLines(log, messages + warmUp);
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

double median(std::vector<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

/// Flushes to the disk a second, of one that writes a page at a time: what each commit waits for.
double flushesASecond()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(u"pages"_s));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered))
        return 0;
    const QByteArray page(4096, 'x');
    const int flushes = benchSize(1000);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < flushes; ++i) {
        file.write(page);
        ::fdatasync(file.handle());
    }
    return flushes * 1e9 / static_cast<double>(timer.nsecsElapsed());
}

void compare(const char *what, const QStringList &options, int messages, int rounds)
{
    std::vector<double> bare;
    std::vector<double> modem;
    std::vector<double> engine;
    std::vector<double> reporting;
    for (int round = 0; round < rounds; ++round) {
        bare.push_back(messages / bareLoop(options, messages).seconds);
        modem.push_back(messages / modemLoop(options, messages).seconds);
        engine.push_back(messages / engineSeconds(options, messages, Reports::Off));
        reporting.push_back(messages / engineSeconds(options, messages, Reports::On));
    }
    const auto number = [](double value) { return QString::number(value, 'f', 1); };
    out() << what << ": bare loop of reads and writes " << number(median(bare))
          << ", the engine's modem with no store " << number(median(modem)) << ", engine "
          << number(median(engine))
          << " messages a second: " << number(100 * median(engine) / median(bare))
          << " % of the first, " << number(100 * median(engine) / median(modem))
          << " % of the second; with status reports " << number(median(reporting)) << ", "
          << number(100 * median(reporting) / median(engine)) << " % of that" << Qt::endl;
}

void compareWithLine(int baud, int messages)
{
    const QStringList options = {u"--baud"_s, QString::number(baud)};
    const Run bare = bareLoop(options, messages);
    const double engine = engineSeconds(options, messages, Reports::Off);
    const double reporting = engineSeconds(options, messages, Reports::On);
    constexpr double bitsOfAByte = 10; // 8N1
    const double line = static_cast<double>(bare.bytes) * bitsOfAByte / baud;
    const auto over = [&](double seconds) {
        return QString::number(100 * (seconds / line - 1), 'f', 1);
    };
    out() << "--baud " << baud << ": the line's own time " << QString::number(line, 'f', 2)
          << " s, bare loop " << over(bare.seconds) << " % over it, engine " << over(engine)
          << " % over it, with status reports, which pass the line too, " << over(reporting) << " %"
          << Qt::endl;
}

void measureMemory()
{
    const int messages = benchSize(100'000);
    const int step = benchSize(10'000);
    const RunningSimulator simulator;
    LineCount log(simulator.logPath());
    Engine engine(simulator, messages, Reports::Off);
    engine.startAlone();
    QElapsedTimer timer;
    timer.start();
    for (int sent = step; sent <= messages; sent += step) {
        waitForLines(log, sent);
        out() << sent << " sent after " << timer.elapsed() / 1000 << " s: " << engine.memory()
              << " kB" << Qt::endl;
    }
}

} // namespace

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (QCoreApplication::arguments().contains("memory"_L1)) {
        measureMemory();
        return 0;
    }
    out() << "flushes of a page: " << QString::number(flushesASecond(), 'f', 0) << " a second"
          << Qt::endl;
    compare("zero latency", {}, benchSize(5000), benchSize(5));
    compare("--latency 20", {u"--latency"_s, u"20"_s}, benchSize(200), 1);
    compare("--latency 200", {u"--latency"_s, u"200"_s}, benchSize(50), 1);
    compareWithLine(9600, benchSize(50));
    return 0;
}
