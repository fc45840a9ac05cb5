// Drop files: the decoder alone, and files through the reader into the engine process. Starts the
// engine in a sandbox of its own; to be run under dbus-run-session.

#include "BenchSize.h"

#include "NorvaneSMS/engine/SMSManagerProxy.h"
#include "NorvaneSMS/queue/QueueDropFile.h"
#include "NorvaneSMS/queue/QueueFileReader.h"
#include "contract/BusTypes.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

QByteArray record(int number)
{
    return QueueDropFile::encode({u"+34 600-123 456"_s,
                                  {QDate(2100, 1, 1), QTime(12, 30, 45), Qt::UTC},
                                  u"Su pedido %1 esta listo."_s.arg(number)});
}

QByteArray records(int count)
{
    QByteArray bytes;
    for (int i = 0; i < count; ++i)
        bytes += record(i);
    return bytes;
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("can't write %s", qPrintable(path));
}

void measureDecoder()
{
    const int count = benchSize(20'000);
    const QByteArray bytes = records(count);
    qsizetype length = 0;
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < count; ++i)
        length += QueueDropFile::decode(QByteArrayView(bytes).sliced(i * 199, 199)).message.size();
    const double seconds = static_cast<double>(timer.nsecsElapsed()) / 1e9;
    if (length == 0)
        qFatal("nothing was decoded");
    out() << "decoding: "
          << QString::number(static_cast<double>(bytes.size()) / seconds / 1e6, 'f', 1) << " MB/s, "
          << QString::number(count / seconds, 'f', 0) << " records a second" << Qt::endl;
}

void report(const char *what, qint64 nanoseconds, int messages)
{
    out() << what << ": " << QString::number(static_cast<double>(nanoseconds) / 1e6, 'f', 1)
          << " ms, " << QString::number(messages * 1e9 / static_cast<double>(nanoseconds), 'f', 0)
          << " messages a second, each on disk" << Qt::endl;
}

/// A call and a commit for each: what the other figures are to be held against.
qint64 measureSingleCalls(SMSManager &engine, int count)
{
    const QByteArray bytes = records(count);
    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < count; ++i) {
        const auto each = QueueDropFile::decode(QByteArrayView(bytes).sliced(i * 199, 199));
        engine.AddSMS(each.phone, each.message, each.deliveryDate);
    }
    const qint64 taken = timer.nsecsElapsed();
    report("calls of AddSMS, one by one", taken, count);
    return taken / count;
}

qint64 measureOneFile(SMSManager &engine, const QString &folder, int count)
{
    const QString file = folder + u"/sms.bulk"_s;
    write(file, records(count));
    QElapsedTimer timer;
    timer.start();
    ImportSMSFile(file, engine, QString());
    const qint64 taken = timer.nsecsElapsed();
    report(qPrintable(u"one file of %1 records"_s.arg(count)), taken, count);
    return taken / count;
}

/// As many files at once as the console takes between two processings of events.
qint64 measureFiles(SMSManager &engine, const QString &folder, int count, int together)
{
    QStringList files;
    for (int i = 0; i < count; ++i) {
        files.append(folder + u"/sms."_s + QString::number(i));
        write(files.last(), record(i));
    }
    QElapsedTimer timer;
    timer.start();
    for (qsizetype next = 0; next < files.size(); next += together)
        ImportSMSFiles(files.mid(next, together), engine, QString());
    const qint64 taken = timer.nsecsElapsed();
    report(qPrintable(u"%1 files of one record, %2 at a time"_s.arg(count).arg(together)), taken,
           count);
    return taken / count;
}

void measureReader(SMSManager &engine, const QString &folder)
{
    const int some = benchSize(1000);
    const int many = benchSize(30'000);
    const auto ratio = [single = measureSingleCalls(engine, some)](qint64 each) {
        out() << "  "
              << QString::number(static_cast<double>(single) / static_cast<double>(each), 'f', 1)
              << " times as fast as call by call" << Qt::endl;
    };
    ratio(measureOneFile(engine, folder, some));
    ratio(measureOneFile(engine, folder, many));
    ratio(measureFiles(engine, folder, some, 20));
    ratio(measureFiles(engine, folder, some, 1));
    const int all = 4 * some + many;
    if (engine.GetQueueSize() != all)
        qFatal("%d messages are in the queue", engine.GetQueueSize());
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
    measureDecoder();
    ProcessEngineLauncher launcher(QDBusConnection::sessionBus(),
                                   QStringLiteral(NORVANE_BIN_DIR "/TovekSMService"),
                                   Bus::callTimeout);
    SMSManagerProxy engine(launcher);
    measureReader(engine, sandbox.path());
    return 0; // the engine ends with its bus
}
