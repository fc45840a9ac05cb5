// The history's window over a real engine with many messages: how long it takes to show them, to
// search while one types, to scroll, and how much memory it takes. In a sandbox of its own; to be
// run under dbus-run-session.
//
//     history_window_bench [smallest]

#include "BenchSize.h"

#include "NorvaneHistory/BusHistorySource.h"
#include "NorvaneHistory/HistoryWindow.h"
#include "TovekSMService/history/TextIndex.h"
#include "TovekSMService/store/SqliteDatabase.h"
#include "TovekSMService/time/TimeSource.h"
#include "contract/BusTypes.h"
#include "foundation/EngineLauncher.h"
#include "foundation/Globals.h"
#include "foundation/ui/Application.h"
#include "foundation/ui/Look.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QProcess>
#include <QScrollBar>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTableView>
#include <QTemporaryDir>
#include <QTextStream>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

constexpr int hangMs = 20 * 60'000;

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

double millisecondsOf(const QElapsedTimer &timer)
{
    return static_cast<double>(timer.nsecsElapsed()) / 1e6;
}

void figure(const char *what, QList<double> times)
{
    std::sort(times.begin(), times.end());
    out() << what << ": " << QString::number(times.at(times.size() / 2), 'f', 2) << " ms, "
          << QString::number(times.at((times.size() * 99 - 1) / 100), 'f', 2)
          << " ms at 99 of 100, " << QString::number(times.constLast(), 'f', 2) << " ms at most"
          << Qt::endl;
}

template <typename Condition>
void waitFor(const char *what, Condition condition)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        if (timer.hasExpired(hangMs))
            qFatal("gave up waiting for: %s", what);
    }
}

/// The engine in a sandbox, and the file of its store.
class Engine
{
public:
    Engine()
    {
        for (const char *const name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
            qputenv(name, m_folder.path().toUtf8());
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    }
    ~Engine() { stop(); }

    void start()
    {
        m_process.start(QStringLiteral(NORVANE_BIN_DIR "/TovekSMService"), QStringList());
        waitFor("the engine", [] {
            return QDBusConnection::sessionBus()
                .interface()
                ->isServiceRegistered(QLatin1String(Bus::serviceName))
                .value();
        });
    }
    void stop()
    {
        m_process.terminate();
        m_process.waitForFinished(hangMs);
    }

    QString storeFile() const { return m_folder.filePath(u"TovekSMService/queue.sqlite"_s); }

private:
    QTemporaryDir m_folder;
    QProcess m_process;
};

class NoLauncher : public EngineLauncher
{
public:
    void ensureRunning() override {}
};

void must(QSqlQuery &query, const QString &statement)
{
    if (!query.exec(statement))
        qFatal("%s", qPrintable(query.lastError().text()));
}

void fill(const QString &file, int rows)
{
    QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s);
    database.setDatabaseName(file);
    if (!database.open())
        qFatal("no store at %s", qPrintable(file));
    QSqlQuery query(database);
    must(query, u"BEGIN"_s);
    must(query,
         u"WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) "
         "INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, reported, "
         "delivery, delivered_at, queued_at) "
         "SELECT i + 10000000, '2025-01-01T00:00:00', 600000000 + (i * 2654435761) % 100000000, "
         "'Estimado cliente: su pedido ' || ((i * 7919) % 1000003) || ' está listo para recoger en "
         "nuestra tienda de Málaga. Gracias por su confianza.', "
         "CASE WHEN i % 100 < 97 THEN 1 ELSE -36 END, "
         "strftime('%Y-%m-%dT%H:%M:%S', '2025-01-01', '+' || (i * 31536000 / %1) || ' seconds'), "
         "1, CASE WHEN i % 100 < 90 THEN 2 ELSE 0 END, "
         "CASE WHEN i % 100 < 90 THEN '2026-01-01T00:00:00' ELSE '' END, "
         "'2025-01-01T00:00:00' FROM n"_s.arg(rows));
    must(query, u"COMMIT"_s);
}

/// Takes all rows into the search index, as the engine does when it is at rest: with the rests that
/// takes it a quarter of an hour for a million.
void fillIndex(const QString &file)
{
    constexpr int rowsAtOnce = 1000;
    SqliteDatabase database(file);
    TextIndex index(database, HistoryTable::Outcomes, TimeSource::system());
    StoreResult<int> taken =
        database.openBeside().and_then([&] { return index.prepare(); }).map([] {
            return rowsAtOnce;
        });
    while (taken && *taken == rowsAtOnce)
        taken = index.step(rowsAtOnce);
    if (!taken)
        qFatal("no index: %s", qPrintable(taken.error().text()));
}

qint64 residentKiB()
{
    QFile status(u"/proc/self/status"_s);
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).trimmed().split(' ').constFirst().toLongLong();
    }
    return 0;
}

QTableView *listOf(const HistoryWindow &window)
{
    return window.findChild<QTableView *>(u"grdMessages"_s);
}

QString firstText(const HistoryWindow &window)
{
    return listOf(window)->model()->index(0, 2).data().toString();
}

void measureOpening(HistorySource &source)
{
    QList<double> shown;
    QList<double> filled;
    for (int round = 0; round < benchSize(20); ++round) {
        QElapsedTimer timer;
        timer.start();
        HistoryWindow window(source, OutputChoices{});
        window.show();
        QCoreApplication::processEvents();
        shown.append(millisecondsOf(timer));
        timer.start();
        source.connectToEngine();
        waitFor("the first page", [&] { return listOf(window)->model()->rowCount() > 0; });
        window.repaint();
        filled.append(millisecondsOf(timer));
    }
    figure("window", shown);
    figure("first page", filled);
}

void measureTyping(HistoryWindow &window)
{
    QList<double> times;
    auto *const search = window.findChild<QLineEdit *>(u"txtSearch"_s);
    for (int round = 0; round < benchSize(20); ++round) {
        const QString number = QString::number(100 + round * 37);
        for (const QString &typed : {number.left(1), number.left(2), number, u"pedido "_s + number,
                                     u"malaga"_s, u"xyzzy"_s}) {
            bool isFound = false;
            const auto reset =
                QObject::connect(listOf(window)->model(), &QAbstractItemModel::modelReset,
                                 [&isFound] { isFound = true; });
            QElapsedTimer timer;
            timer.start();
            search->setText(typed);
            waitFor("what is found", [&isFound] { return isFound; });
            window.repaint();
            QObject::disconnect(reset);
            times.append(millisecondsOf(timer));
        }
    }
    search->clear();
    waitFor("all rows", [&] { return listOf(window)->model()->rowCount() > 0; });
    figure("search as one types, with the pause behind a key", times);
}

void measureScrolling(HistoryWindow &window)
{
    QTableView *const list = listOf(window);
    QList<double> times;
    const int rows = benchSize(100'000, 500);
    while (list->model()->rowCount() < rows) {
        const int before = list->model()->rowCount();
        QElapsedTimer timer;
        timer.start();
        list->verticalScrollBar()->setValue(list->verticalScrollBar()->value() +
                                            list->verticalScrollBar()->pageStep());
        list->viewport()->repaint();
        times.append(millisecondsOf(timer));
        QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
        if (list->verticalScrollBar()->value() == list->verticalScrollBar()->maximum() &&
            list->model()->canFetchMore({}))
            list->model()->fetchMore({});
        if (before == list->model()->rowCount() && !list->model()->canFetchMore({}))
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    figure("scrolling by a page, drawn", times);
    out() << "memory behind " << list->model()->rowCount()
          << " rows: " << QString::number(static_cast<double>(residentKiB()) / 1024, 'f', 1)
          << " MiB (" << firstText(window).size() << " characters a row)" << Qt::endl;
}

void measure()
{
    const int rows = benchSize(1'000'000, 2000);
    Engine engine;
    engine.start(); // makes the store
    engine.stop();
    fill(engine.storeFile(), rows);
    fillIndex(engine.storeFile());
    engine.start();
    NoLauncher launcher;
    BusHistorySource source(QDBusConnection::sessionBus(), launcher);
    measureOpening(source);
    HistoryWindow window(source, OutputChoices{});
    window.show();
    source.connectToEngine();
    waitFor("the first page", [&] { return listOf(window)->model()->rowCount() > 0; });
    measureTyping(window);
    measureScrolling(window);
}

} // namespace

} // namespace norvane

int main(int argc, char **argv)
{
    using namespace norvane;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    Application application(argc, argv);
    applyLook();
    goLocalize = std::make_unique<cls_Localize>();
    if (!goLocalize->Init(QStringLiteral(NORVANE_LANGUAGE_DIR "/NorvaneSMS_ESN.XML"), u"ESN"_s))
        qFatal("no language file");
    measure();
    return 0;
}
