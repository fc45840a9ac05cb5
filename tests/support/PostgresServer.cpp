#include "support/PostgresServer.h"

#include "support/WaitUntil.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

#include <algorithm>
#include <csignal>
#include <optional>

#include <grp.h>
#include <pwd.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr auto superuser = "norvane"_L1;

/// The programs of the newest version that is installed.
QString programPath(const QString &name)
{
    const QDir versions(u"/usr/lib/postgresql"_s);
    QStringList folders = versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    std::sort(folders.begin(), folders.end(), [](const QString &one, const QString &other) {
        return one.toDouble() > other.toDouble();
    });
    std::transform(folders.begin(), folders.end(), folders.begin(),
                   [&](const QString &folder) { return versions.filePath(folder + u"/bin"_s); });
    const QString found = QStandardPaths::findExecutable(name, folders);
    return found.isEmpty() ? QStandardPaths::findExecutable(name) : found;
}

struct User
{
    uid_t id;
    gid_t group;
};

/// Who the server runs as, if that is another one than who the tests run as: it refuses root.
std::optional<User> serverUser()
{
    if (::geteuid() != 0)
        return std::nullopt;
    const passwd *const entry = ::getpwnam("postgres");
    if (!entry)
        qFatal("no user postgres");
    return User{entry->pw_uid, entry->pw_gid};
}

/// Lets a process run as the server's user and end with the test program.
void tame(QProcess &process, int signalAtEnd)
{
    const std::optional<User> user = serverUser();
    const pid_t parent = ::getpid();
    process.setChildProcessModifier([user, parent, signalAtEnd] {
        if (user &&
            (::setgroups(0, nullptr) != 0 || ::setgid(user->group) != 0 || ::setuid(user->id) != 0))
            ::_exit(126);
        // A change of the user clears it: this comes last. The parent may have ended before.
        if (::prctl(PR_SET_PDEATHSIG, signalAtEnd) != 0 || ::getppid() != parent)
            ::_exit(126);
    });
}

void giveToServer(const QString &path)
{
    const std::optional<User> user = serverUser();
    if (user && ::chown(QFile::encodeName(path).constData(), user->id, user->group) != 0)
        qFatal("%s can't be given to the server", qPrintable(path));
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QString quoted(const QString &name)
{
    return u'"' + QString(name).replace(u'"', u"\"\""_s) + u'"';
}

} // namespace

PostgresServer::PostgresServer(Durability durability, Listen listen)
    : m_folder(u"/tmp/norvane-pg-XXXXXX"_s), // the path of a socket has 107 bytes at most
      m_port(listen == Listen::SocketAndLoopback ? std::make_unique<ReservedPort>() : nullptr)
{
    const QString flushed = durability == Durability::Flushed ? u"on"_s : u"off"_s;
    m_settings = {{u"fsync"_s, flushed},
                  {u"full_page_writes"_s, flushed},
                  {u"unix_socket_directories"_s, m_folder.path()},
                  {u"shared_buffers"_s, u"16MB"_s},
                  {u"max_connections"_s, u"50"_s},
                  {u"max_wal_size"_s, u"256MB"_s}, // a checkpoint would be due too often
                  {u"max_wal_senders"_s, u"0"_s},
                  {u"wal_level"_s, u"minimal"_s},
                  {u"jit"_s, u"off"_s}};
    setUpFolder();
    if (!start())
        qFatal("no PostgreSQL server:\n%s", contentOf(logPath()).constData());
}

PostgresServer::~PostgresServer()
{
    killNow();
}

void PostgresServer::setUpFolder()
{
    if (programPath(u"postgres"_s).isEmpty())
        qFatal("PostgreSQL isn't installed");
    if (!m_folder.isValid())
        qFatal("%s", qPrintable(m_folder.errorString()));
    giveToServer(m_folder.path());
    run(programPath(u"initdb"_s),
        {u"--pgdata="_s + dataFolder(), u"--username="_s + superuser, u"--auth=trust"_s,
         u"--auth-host=scram-sha-256"_s, u"--encoding=UTF8"_s, u"--locale=C"_s,
         u"--wal-segsize=1"_s, u"--no-sync"_s, u"--no-instructions"_s});
}

void PostgresServer::run(const QString &program, const QStringList &arguments) const
{
    QProcess process;
    tame(process, SIGKILL);
    process.setWorkingDirectory(m_folder.path());
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(program, arguments);
    if (!process.waitForFinished(hangMs) || process.exitStatus() != QProcess::NormalExit ||
        process.exitCode() != 0)
        qFatal("%s failed:\n%s", qPrintable(program), process.readAll().constData());
}

bool PostgresServer::start()
{
    if (isRunning())
        return true;
    QStringList arguments{u"-D"_s, dataFolder(),
                          u"-p"_s, QString::number(port()),
                          u"-h"_s, m_port ? u"127.0.0.1"_s : QString()};
    for (auto setting = m_settings.cbegin(); setting != m_settings.cend(); ++setting)
        arguments << u"-c"_s << setting.key() + u'=' + setting.value();
    tame(m_process, SIGQUIT);
    m_process.setWorkingDirectory(m_folder.path());
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setStandardErrorFile(logPath(), QIODevice::Append);
    m_process.start(programPath(u"postgres"_s), arguments);
    if (!m_process.waitForStarted(hangMs))
        return false;
    constexpr int betweenLooks = 10; // ms
    for (int looks = hangMs / betweenLooks; looks > 0 && !isReady(); --looks) {
        if (m_process.waitForFinished(betweenLooks) || !isRunning())
            return false;
    }
    return isReady();
}

/// The server keeps a file with its state in the last of eight lines. One that was killed may have
/// left its own.
bool PostgresServer::isReady() const
{
    const QList<QByteArray> lines =
        contentOf(dataFolder() + u"/postmaster.pid"_s).trimmed().split('\n');
    return lines.size() == 8 && lines.constFirst().toLongLong() == processId() &&
           lines.constLast().trimmed() == "ready";
}

bool PostgresServer::stop()
{
    return signalAndWait(SIGINT);
}

bool PostgresServer::killNow()
{
    return signalAndWait(SIGQUIT);
}

bool PostgresServer::signalAndWait(int signal)
{
    if (!isRunning())
        return true;
    ::kill(static_cast<pid_t>(processId()), signal);
    return m_process.waitForFinished(hangMs);
}

QString PostgresServer::setUpTls()
{
    const QString certificate = dataFolder() + u"/server.crt"_s;
    run(QStandardPaths::findExecutable(u"openssl"_s),
        {u"req"_s, u"-x509"_s, u"-newkey"_s, u"ec"_s, u"-pkeyopt"_s,
         u"ec_paramgen_curve:prime256v1"_s, u"-nodes"_s, u"-days"_s, u"30"_s, u"-subj"_s,
         u"/CN=localhost"_s, u"-addext"_s, u"subjectAltName=DNS:localhost,IP:127.0.0.1"_s,
         u"-keyout"_s, dataFolder() + u"/server.key"_s, u"-out"_s, certificate});
    setSetting(u"ssl"_s, u"on"_s);
    return certificate;
}

QString PostgresServer::freshDatabase(const QString &name)
{
    sql(u"DROP DATABASE IF EXISTS %1 WITH (FORCE)"_s.arg(quoted(name)));
    sql(u"CREATE DATABASE %1 TEMPLATE template0 STRATEGY file_copy"_s.arg(quoted(name)));
    return connection(name);
}

QString PostgresServer::login(const QString &database)
{
    return u"dbname=%1 user=%2"_s.arg(database, superuser);
}

QString PostgresServer::connection(const QString &database) const
{
    return u"host=%1 port=%2 %3"_s.arg(m_folder.path(), QString::number(port()), login(database));
}

QString PostgresServer::loopbackConnection(const QString &database) const
{
    return u"host=127.0.0.1 port=%1 dbname=%2"_s.arg(QString::number(port()), database);
}

int PostgresServer::port() const
{
    constexpr int defaultPort = 5432; // the socket's name contains it
    return m_port ? m_port->number() : defaultPort;
}

QString PostgresServer::socketPath() const
{
    return m_folder.filePath(u".s.PGSQL.%1"_s.arg(port()));
}

PostgresServer::Rows PostgresServer::sql(const QString &statements, const QString &database) const
{
    const QString quiet = u" options='-c client_min_messages=warning'"_s;
    return PostgresClient(connection(database) + quiet).query(statements);
}

} // namespace norvane
