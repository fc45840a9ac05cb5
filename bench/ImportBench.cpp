// Import and bulk send: a list as text, a sheet in each format, and 30,000 recipients from the
// console's button to the engine's count, each beside the least that it could take. Starts the
// engine in a sandbox of its own; to be run under dbus-run-session.

#include "BenchSize.h"

#include "NorvaneSMS/console/frmSMSClient.h"
#include "NorvaneSMS/engine/SMSManagerProxy.h"
#include "NorvaneSMS/import/frmImport.h"
#include "NorvaneSMS/import/readers/HelperConnection.h"
#include "NorvaneSheetReader/SheetFile.h"
#include "contract/BusTypes.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"
#include "foundation/StoredSettings.h"
#include "foundation/ui/Application.h"
#include "foundation/ui/MessageEdit.h"

#include <QDateEdit>
#include <QElapsedTimer>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <sys/resource.h>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

QTextStream &out()
{
    static QTextStream stream(stdout);
    return stream;
}

void figure(const QString &what, double value, const char *unit)
{
    out() << what << ": " << QString::number(value, 'f', 2) << ' ' << unit << Qt::endl;
}

template <typename Action>
double secondsOf(Action &&action)
{
    QElapsedTimer timer;
    timer.start();
    action();
    return static_cast<double>(timer.nsecsElapsed()) / 1e9;
}

/// What this process has used of the processor: on a machine that others use as well, the figure
/// that two runs can be compared by.
double processorSeconds()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    const auto seconds = [](const timeval &time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double memoryMebibytes()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024;
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("%s can't be written", qPrintable(path));
}

QByteArray listOf(int lines)
{
    QByteArray text;
    for (int i = 0; i < lines; ++i)
        text += "600 " + QByteArray::number(1'000'000 + i) + "|Nombre " + QByteArray::number(i) +
                "|Lisboa\r\n";
    return text;
}

void measureText(const QString &path)
{
    const int lines = benchSize(1'000'000);
    write(path, listOf(lines));
    figure(u"floor: the bytes of %1 lines"_s.arg(lines), secondsOf([&] {
               QFile file(path);
               if (!file.open(QIODevice::ReadOnly))
                   qFatal("the list can't be read");
               while (!file.read(65536).isEmpty()) {
               }
           }),
           "s");
    NumberedFiles files;
    clsCollection recipients;
    const double before = processorSeconds();
    figure(u"a text of %1 lines, without duplicates"_s.arg(lines),
           secondsOf([&] { readTextRecipients(files, path, Duplicates::Remove, recipients); }),
           "s");
    figure(u"of it on the processor"_s, processorSeconds() - before, "s");
    figure(u"memory of the process then"_s, memoryMebibytes(), "MiB");
    if (recipients.getCount() != lines)
        qFatal("%d items", recipients.getCount());
}

void measureSheet(const QString &what, const QString &path)
{
    figure(u"floor: the bytes of "_s + what, secondsOf([&] {
               QFile file(path);
               if (!file.open(QIODevice::ReadOnly))
                   qFatal("%s can't be read", qPrintable(path));
               file.readAll();
           }),
           "s");
    clsCollection recipients;
    figure(what + u", opened and read"_s, secondsOf([&] {
               HelperConnection connection(QStringLiteral(NORVANE_BIN_DIR "/NorvaneSheetReader"));
               connection.open(path);
               const QString sheet = connection.sheets().first();
               const QString field = connection.describe(sheet).fields.first();
               readSheetRecipients(connection, sheet, field, Duplicates::Remove, recipients);
           }),
           "s");
    out() << "  recipients: " << recipients.getCount() << Qt::endl;
}

void measureSheets(const QTemporaryDir &folder)
{
    const int rows = benchSize(60'000);
    QByteArray xlsx = "<row><c t=\"inlineStr\"><is><t>Num</t></is></c></row>";
    QByteArray ods = "<t:table-row><t:table-cell o:value-type=\"string\"><x:p>Num</x:p>"
                     "</t:table-cell></t:table-row>";
    for (int i = 0; i < rows; ++i) {
        const QByteArray number = QByteArray::number(600'000'000 + i);
        xlsx += "<row><c><v>" + number + "</v></c></row>";
        ods += "<t:table-row><t:table-cell o:value-type=\"float\" o:value=\"" + number +
               "\"><x:p>" + number + "</x:p></t:table-cell></t:table-row>";
    }
    const QString path = folder.filePath(u"book"_s);
    write(path, xlsxOf(xlsx));
    measureSheet(u"an .xlsx of %1 rows"_s.arg(rows), path);
    write(path, odsOf(ods));
    measureSheet(u"an .ods of %1 rows"_s.arg(rows), path);
    // The kind that can't be laid out by a few lines: made by tests/data/import/sixty-thousand.pl.
    const QString xls = qEnvironmentVariable("NORVANE_BENCH_XLS");
    if (!xls.isEmpty())
        measureSheet(u"an .xls of 60,000 rows"_s, xls);
}

void measureTransaction(const QString &path, int rows)
{
    figure(u"floor: one transaction of %1 rows"_s.arg(rows), secondsOf([&] {
               QSqlDatabase database = QSqlDatabase::addDatabase(u"QSQLITE"_s);
               database.setDatabaseName(path);
               database.open();
               QSqlQuery query(database);
               query.exec(u"PRAGMA journal_mode=WAL"_s);
               query.exec(u"PRAGMA synchronous=FULL"_s);
               query.exec(u"CREATE TABLE t (phone TEXT, message TEXT, date TEXT)"_s);
               database.transaction();
               query.prepare(u"INSERT INTO t VALUES (?, ?, ?)"_s);
               for (int i = 0; i < rows; ++i) {
                   query.addBindValue(QString::number(600'000'000 + i));
                   query.addBindValue(u"Su pedido %1 esta listo."_s.arg(i));
                   query.addBindValue(u"2100-01-01T00:00:00"_s);
                   query.exec();
               }
               database.commit();
           }),
           "s");
}

/// Answers every box at once.
class NoBoxes : public MessageBoxes
{
public:
    Answer show(const QString &text, Icon icon, Buttons, const QString &) override
    {
        if (icon != Icon::Information)
            qFatal("%s", qPrintable(text));
        return Answer::Ok;
    }
};

void measureBulkSend(const QTemporaryDir &folder)
{
    const int count = benchSize(30'000);
    const QString list = folder.filePath(u"list.txt"_s);
    write(list, listOf(count));
    measureTransaction(folder.filePath(u"floor.sqlite"_s), count);

    NoBoxes boxes;
    installMessageBoxes(&boxes);
    goLocalize = std::make_unique<cls_Localize>();
    goLocalize->Init(QStringLiteral(NORVANE_LANGUAGE_DIR "/NorvaneSMS_ESN.XML"), u"ESN"_s);
    IniStoredSettings settings;
    settings.save(u"Norvane"_s, u"SMS"_s, u"ServerMode"_s, u"True"_s);
    ProcessEngineLauncher launcher(QDBusConnection::sessionBus(),
                                   QStringLiteral(NORVANE_BIN_DIR "/TovekSMService"),
                                   Bus::callTimeout);
    frmSMSClient console({[&] { return std::make_unique<SMSManagerProxy>(launcher); }, [] {},
                          [] { return QDateTime(QDate(2100, 1, 1), QTime(0, 0), Qt::UTC); },
                          ModeSettings(settings, folder.path()), QLocale::c()});
    console.Form_Load();
    console.show();
    console.findChild<MessageEdit *>(u"txtMessage"_s)->setText(u"Su pedido %1 esta listo."_s);
    SMSManagerProxy other(launcher);
    QElapsedTimer timer;
    QTimer::singleShot(0, &console, [&] {
        auto *const form = console.findChild<frmImport *>();
        form->findChild<QLineEdit *>(u"txtFilePath"_s)->setText(list);
        timer.start();
        form->findChild<QPushButton *>(u"btnImport"_s)->click();
    });
    console.findChild<QPushButton *>(u"btnImport"_s)->click();
    if (other.GetQueueSize() != count)
        qFatal("%d messages", other.GetQueueSize());
    figure(u"a bulk send of %1, from the dialog's button to the queue's count"_s.arg(count),
           static_cast<double>(timer.nsecsElapsed()) / 1e9, "s");
    console.close();
}

} // namespace

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    const QTemporaryDir sandbox;
    for (const char *variable : {"XDG_DATA_HOME", "XDG_CONFIG_HOME"})
        qputenv(variable, QFile::encodeName(sandbox.filePath(QLatin1String(variable))));
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const Application application(argc, argv);
    measureText(sandbox.filePath(u"list.txt"_s));
    measureSheets(sandbox);
    measureBulkSend(sandbox);
    return 0; // the engine ends with its bus
}
