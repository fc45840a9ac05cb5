// The console's window while 100,000 messages wait for a later date and the queue changes: how long
// the event loop leaves an operator waiting. Starts the engine process in a sandbox of its own; to
// be run under dbus-run-session.

#include "BenchSize.h"

#include "NorvaneSMS/app/modSMSClient.h"
#include "NorvaneSMS/console/QueueGrid.h"
#include "NorvaneSMS/console/frmSMSClient.h"
#include "NorvaneSMS/engine/SMSManagerProxy.h"
#include "contract/BusTypes.h"
#include "foundation/Globals.h"
#include "foundation/StoredSettings.h"

#include <QApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThread>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <vector>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

int waitingMessages()
{
    return benchSize(100'000, 2);
}

/// Milliseconds for which the window is watched while the queue changes.
int watchMs()
{
    return benchSize(10'000, 200);
}

QString engineProgram()
{
    return QStringLiteral(NORVANE_BIN_DIR "/TovekSMService");
}

QDateTime later()
{
    return {QDate(2100, 1, 1), QTime(0, 0), Qt::UTC};
}

/// Beats of a timer, and how late each of them came.
class Pulse
{
public:
    Pulse()
    {
        m_timer.setTimerType(Qt::PreciseTimer);
        m_timer.setInterval(interval);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            m_late.push_back(
                std::max(0.0, static_cast<double>(m_sinceLast.nsecsElapsed()) / 1e6 - interval));
            m_sinceLast.restart();
        });
    }
    void start()
    {
        m_late.clear();
        m_sinceLast.start();
        m_timer.start();
    }
    void print(const char *what)
    {
        m_timer.stop();
        if (m_late.empty())
            qFatal("%s: the timer never came", what);
        std::sort(m_late.begin(), m_late.end());
        const auto at = [this](size_t percent) {
            return QString::number(m_late[(m_late.size() - 1) * percent / 100], 'f', 2);
        };
        out() << what << ": event loop late by " << at(50) << " ms (median), " << at(95)
              << " ms (95 of 100), " << at(99) << " ms (99 of 100), " << at(100) << " ms (most), "
              << m_late.size() << " beats" << Qt::endl;
    }

private:
    static constexpr int interval = 5; // ms

    QTimer m_timer;
    QElapsedTimer m_sinceLast;
    std::vector<double> m_late;
};

void runLoop(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

/// Changes the queue all the time, from a thread of its own. It is no console, so the engine spaces
/// its reports for the window alone.
class Changer
{
public:
    Changer()
    {
        m_thread.reset(QThread::create([this] {
            const QString name = u"changer"_s;
            QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name);
            QDBusMessage add = QDBusMessage::createMethodCall(
                QLatin1String(Bus::serviceName), QLatin1String(Bus::objectPath),
                QLatin1String(Bus::interfaceName), u"AddSMS"_s);
            add << u"600000000"_s << u"one more"_s << Bus::dateText(later());
            while (!m_stop) {
                bus.call(add);
                ++changes;
                QThread::msleep(10);
            }
            QDBusConnection::disconnectFromBus(name);
        }));
        m_thread->start();
    }
    ~Changer()
    {
        m_stop = true;
        m_thread->wait();
    }
    std::atomic<int> changes = 0;

private:
    std::atomic<bool> m_stop = false;
    std::unique_ptr<QThread> m_thread;
};

void fillQueue(SMSManager &engine)
{
    const int atOnce = benchSize(20'000);
    for (int done = 0; done < waitingMessages(); done += atOnce) {
        SMSList list;
        for (int i = 0; i < atOnce; ++i)
            list.Add(u"9%1"_s.arg(done + i, 8, 10, QLatin1Char('0')),
                     u"Su pedido %1 está listo para recoger."_s.arg(done + i));
        engine.AddSMSList(list, later().addSecs(done));
    }
}

void measureWindow(frmSMSClient &console)
{
    Pulse pulse;
    pulse.start();
    runLoop(benchSize(1000, 200));
    pulse.print("quiet");

    auto *const grid = console.findChild<QueueGrid *>(u"grdQueue"_s);
    int rebuilds = 0;
    QObject::connect(grid->model(), &QAbstractItemModel::modelReset, [&] { ++rebuilds; });
    {
        const Changer changer;
        pulse.start();
        runLoop(watchMs());
        pulse.print("queue changing");
        out() << rebuilds << " rebuilds of a grid of " << grid->rows() << " rows in " << watchMs()
              << " ms, " << changer.changes << " changes" << Qt::endl;

        grid->setCurrentIndex(grid->model()->index(waitingMessages() / 2, 2));
        grid->QAbstractItemView::edit(grid->currentIndex());
        pulse.start();
        runLoop(watchMs());
        pulse.print("queue changing, a cell in the middle being edited");
    }
}

} // namespace

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    const QTemporaryDir sandbox;
    qputenv("XDG_DATA_HOME", QFile::encodeName(sandbox.filePath(u"data"_s)));
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(sandbox.filePath(u"config"_s)));
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);

    ProcessEngineLauncher launcher(QDBusConnection::sessionBus(), engineProgram(),
                                   Bus::callTimeout);
    {
        SMSManagerProxy engine(launcher);
        fillQueue(engine);
    }
    goLocalize = std::make_unique<cls_Localize>();
    if (!goLocalize->Init(QStringLiteral(NORVANE_BIN_DIR "/NorvaneSMS_ESN.XML"), u"ESN"_s))
        return 1;
    IniStoredSettings settings;
    frmSMSClient console({[&] { return std::make_unique<SMSManagerProxy>(launcher); },
                          modSMSClient::ReleaseGlobals,
                          [] { return QDateTime(QDate(2026, 1, 1), QTime(0, 0), Qt::UTC); },
                          ModeSettings(settings, sandbox.path()), QLocale::c()});
    QElapsedTimer timer;
    timer.start();
    console.Form_Load();
    out() << "load of the window with " << waitingMessages() << " waiting: " << timer.elapsed()
          << " ms" << Qt::endl;
    console.show();
    runLoop(benchSize(1000, 200));
    measureWindow(console);
    console.close();
    return 0; // the engine ends with its bus
}
