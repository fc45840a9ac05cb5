#include "TovekSMService/platform/SerialDevices.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>
#include <system_error>
#include <utility>

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <termios.h>
#include <unistd.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Major device numbers of the near ends of pseudo-terminals.
constexpr unsigned firstPtyKind = 136;
constexpr unsigned lastPtyKind = 143;

/// "/dev/pts/3" is locked as "LCK..pts_3" by some programs and as "LCK..3" by others.
QStringList lockNames(const QString &path)
{
    QString below = path;
    if (below.startsWith("/dev/"_L1))
        below = below.mid(5);
    below.replace(u'/', u'_');
    QStringList names = {u"LCK.."_s + below};
    const QString last = u"LCK.."_s + QFileInfo(path).fileName();
    if (!names.contains(last) && !path.startsWith("/dev/pts/"_L1))
        names.append(last);
    return names;
}

/// What the system tells of a process behind its name, from the state on; empty if nothing.
QList<QByteArray> statusOf(qint64 pid)
{
    QFile file(u"/proc/%1/stat"_s.arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    // "pid (name) state ...", where the name may hold anything.
    const QByteArray line = file.read(4096);
    return line.mid(line.lastIndexOf(')') + 2).split(' ');
}

/// A process that has ended and that nobody has taken note of yet counts as ended.
bool isAlive(qint64 pid)
{
    if (::kill(static_cast<pid_t>(pid), 0) != 0 && errno != EPERM)
        return false;
    const QByteArray state = statusOf(pid).value(0);
    return state != "Z" && state != "X";
}

/// For how many seconds the process has been there.
std::optional<double> ageOf(qint64 pid)
{
    constexpr qsizetype startField = 19; // behind the state, in ticks since the system came up
    bool isNumber = false;
    const double ticks = statusOf(pid).value(startField).toDouble(&isNumber);
    QFile file(u"/proc/uptime"_s);
    if (!isNumber || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const double up = file.readLine(64).split(' ').constFirst().toDouble();
    return up - ticks / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

/// Whether the process with this number is the one that wrote the lock: a number is given anew some
/// time after its process has ended, and who began after the lock was written didn't write it.
bool isWriter(qint64 pid, const QString &lockFile)
{
    constexpr double slack = 2; // seconds, for the grain of both clocks
    if (!isAlive(pid))
        return false;
    const std::optional<double> age = ageOf(pid);
    const QDateTime written = QFileInfo(lockFile).lastModified();
    if (!age || !written.isValid())
        return true;
    const double lockAge =
        static_cast<double>(written.msecsTo(QDateTime::currentDateTime())) / 1000;
    return *age + slack >= lockAge;
}

QString nameOf(qint64 pid)
{
    QFile file(u"/proc/%1/comm"_s.arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.read(256)).trimmed();
}

/// The number in the first line of a lock file, which is all that its forms have in common.
qint64 pidIn(const QString &lockFile)
{
    QFile file(lockFile);
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    bool isNumber = false;
    const qint64 pid = file.readLine(64).trimmed().toLongLong(&isNumber);
    return isNumber && pid > 0 && std::in_range<pid_t>(pid) ? pid : 0;
}

/// Whether the process uses the device with this path. Only the names of its handles are looked at:
/// what is behind them may stand on a file system that doesn't answer. One that makes
/// pseudo-terminals is the far end of such a device, and no other user of it.
bool isUser(qint64 pid, const std::filesystem::path &path)
{
    const bool isPseudoTerminal = path.parent_path() == "/dev/pts";
    bool hasOpen = false;
    std::error_code error;
    const auto folder = std::filesystem::path("/proc") / std::to_string(pid) / "fd";
    for (std::filesystem::directory_iterator handle(folder, error), end; !error && handle != end;
         handle.increment(error)) {
        std::error_code gone;
        const std::filesystem::path target = std::filesystem::read_symlink(handle->path(), gone);
        if (isPseudoTerminal && (target == "/dev/ptmx" || target == "/dev/pts/ptmx"))
            return false;
        hasOpen = hasOpen || target == path;
    }
    return hasOpen;
}

constexpr std::array<std::pair<speed_t, int>, 25> speeds = {
    {{B50, 50},          {B75, 75},           {B110, 110},         {B134, 134},
     {B150, 150},        {B200, 200},         {B300, 300},         {B600, 600},
     {B1200, 1200},      {B1800, 1800},       {B2400, 2400},       {B4800, 4800},
     {B9600, 9600},      {B19200, 19200},     {B38400, 38400},     {B57600, 57600},
     {B115200, 115200},  {B230400, 230400},   {B460800, 460800},   {B500000, 500000},
     {B921600, 921600},  {B1000000, 1000000}, {B2000000, 2000000}, {B3000000, 3000000},
     {B4000000, 4000000}}};

} // namespace

namespace SerialDevices {

QString pathOfPort(int number)
{
    return u"/dev/ttyS%1"_s.arg(number - 1);
}

bool isTerminalDevice(const QString &path)
{
    struct stat info = {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0 || !S_ISCHR(info.st_mode))
        return false;
    // Every terminal stands under this class in the device tree, but pseudo-terminals, whose
    // device numbers are fixed. Where the tree isn't mounted, opening will show.
    const unsigned kind = major(info.st_rdev);
    if (kind >= firstPtyKind && kind <= lastPtyKind)
        return true;
    const QString tree = u"/sys/class/tty"_s;
    return !QFileInfo::exists(tree) || QFileInfo::exists(tree + u'/' + QFileInfo(path).fileName());
}

bool mayUse(const QString &path)
{
    return ::access(QFile::encodeName(path).constData(), R_OK | W_OK) == 0;
}

/// The classic places for "LCK..name" files, which terminal programs agree on.
QStringList lockFolders()
{
    return {u"/var/lock"_s, u"/run/lock"_s, u"/var/lock/lockdev"_s, u"/tmp"_s};
}

std::optional<Holder> holderOf(const QString &path, const QStringList &folders)
{
    for (const QString &folder : folders) {
        for (const QString &name : lockNames(path)) {
            const QString file = folder + u'/' + name;
            const qint64 pid = pidIn(file);
            if (pid > 0 && pid != ::getpid() && isWriter(pid, file))
                return Holder{pid, nameOf(pid)};
        }
    }
    return std::nullopt;
}

void removeDeadLocks(const QString &path, const QStringList &folders)
{
    for (const QString &folder : folders) {
        for (const QString &name : lockNames(path)) {
            const QString file = folder + u'/' + name;
            const qint64 pid = pidIn(file);
            if (pid > 0 && !isWriter(pid, file))
                QFile::remove(file);
        }
    }
}

std::optional<Holder> openerOf(const QString &path)
{
    const std::filesystem::path device(QFile::encodeName(path).toStdString());
    const QStringList entries = QDir(u"/proc"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    for (const QString &entry : entries) {
        bool isNumber = false;
        const qint64 pid = entry.toLongLong(&isNumber);
        if (isNumber && pid != ::getpid() && isUser(pid, device))
            return Holder{pid, nameOf(pid)};
    }
    return std::nullopt;
}

QStringList serialPorts(const QString &folder)
{
    static const QStringList kinds = {u"ttyUSB*"_s, u"ttyACM*"_s, u"rfcomm*"_s, u"ttyAMA*"_s,
                                      u"ttyS*"_s};
    QStringList paths;
    QSet<QString> devices;
    const auto collect = [&](const QDir &place, const QString &kind) {
        const QStringList names = place.entryList({kind}, QDir::Files | QDir::System, QDir::Name);
        for (const QString &name : names) {
            const QString path = place.filePath(name);
            const QString device = QFileInfo(path).canonicalFilePath();
            if (device.isEmpty() || devices.contains(device))
                continue;
            devices.insert(device);
            paths.append(path);
        }
    };
    collect(QDir(folder + u"/serial/by-id"_s), u"*"_s);
    for (const QString &kind : kinds)
        collect(QDir(folder), kind);
    return paths;
}

quint64 nodeOf(const QString &path)
{
    struct stat info = {};
    return ::stat(QFile::encodeName(path).constData(), &info) == 0 ? info.st_ino : 0;
}

QString describe(const Holder &holder)
{
    if (holder.name.isEmpty())
        return QString::number(holder.pid);
    return u"%1 (%2)"_s.arg(holder.name).arg(holder.pid);
}

bool isPresent(int handle)
{
    // A terminal whose device has gone answers every request with an error.
    struct termios settings = {};
    return ::tcgetattr(handle, &settings) == 0;
}

std::optional<int> speedOf(int handle)
{
    struct termios settings = {};
    if (::tcgetattr(handle, &settings) != 0)
        return std::nullopt;
    const speed_t code = ::cfgetospeed(&settings);
    for (const auto &[known, speed] : speeds)
        if (known == code)
            return speed;
    return std::nullopt;
}

} // namespace SerialDevices

} // namespace norvane
