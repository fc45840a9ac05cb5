#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace norvane {

using namespace Qt::StringLiterals;

/// What the engine has to know of the platform's serial devices.
namespace SerialDevices {

/// A program that has locked a device.
struct Holder
{
    qint64 pid = 0;
    /// Empty where it can't be told.
    QString name;
};

/// The path of the serial port with this number, counted from 1.
QString pathOfPort(int number);

/// Whether the path names a terminal device, without opening it.
bool isTerminalDevice(const QString &path);

/// Whether this account may read and write the device.
bool mayUse(const QString &path);

/// The folders in which terminal programs leave their lock files.
QStringList lockFolders();

/// The living program that a lock file names as the holder of the device, if it is another one.
/// @param path of the device itself, not of a link
std::optional<Holder> holderOf(const QString &path, const QStringList &folders = lockFolders());

/// Removes the lock files of programs that ended without doing so.
/// @param path of the device itself, not of a link
void removeDeadLocks(const QString &path, const QStringList &folders = lockFolders());

/// Another program that has the device open, locked or not, as far as this account may know.
/// @param path of the device itself, not of a link
std::optional<Holder> openerOf(const QString &path);

/// The serial ports that the platform has: the links that tell the devices behind them first, and
/// no device twice.
/// @param folder where they stand
QStringList serialPorts(const QString &folder = u"/dev"_s);

/// Tells a device from another one that came later under the same path; 0 for none.
quint64 nodeOf(const QString &path);

/// "minicom (1234)", or the number alone.
QString describe(const Holder &holder);

/// Whether the device behind an open handle is still there.
bool isPresent(int handle);

/// Bits a second at which an open device really runs; nothing if the platform has no word for it.
std::optional<int> speedOf(int handle);

} // namespace SerialDevices

} // namespace norvane
