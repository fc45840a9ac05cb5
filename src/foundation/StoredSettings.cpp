#include "foundation/StoredSettings.h"

#include "common/FailureNumbers.h"
#include "common/SettingsText.h"
#include "foundation/FailureTexts.h"

#include <QLockFile>
#include <QStandardPaths>

#include <cerrno>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 maxSettingsBytes = 1024 * 1024;

QString folderOf(const QString &application)
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) + u'/' +
           application;
}

QString fileOf(const QString &application)
{
    return folderOf(application) + u"/settings.ini"_s;
}

bool isName(const QString &name)
{
    return !name.isEmpty() && !name.contains(QChar::Null) && name.isValidUtf16();
}

void checkNames(const QString &application, const QString &section, const QString &key,
                const QString &source)
{
    const bool leavesFolder =
        application.contains(u'/') || application == u"." || application == u"..";
    if (!isName(application) || leavesFolder || !isName(section) || !isName(key))
        Failure::raise(Failure::InvalidProcedureCall, source);
}

SettingsText readText(PlatformFiles &files, const QString &application, const QString &source)
{
    const QString file = fileOf(application);
    QByteArray bytes;
    const int error = files.read(file, maxSettingsBytes, bytes);
    if (error == ENOENT)
        return {};
    if (error != 0)
        throw NumberedFailure(Failure::fromErrno(error), source,
                              FailureText::settingsUnreadable(file));
    auto text = SettingsText::parse(bytes);
    if (!text)
        throw NumberedFailure(Failure::PathFileAccess, source, FailureText::settingsDamaged(file));
    return *text;
}

[[noreturn]] void raiseNotSaved(Failure::Number number, const QString &file, const QString &source)
{
    throw NumberedFailure(number, source, FailureText::settingsNotSaved(file));
}

void makeFolders(PlatformFiles &files, const QString &path, const QString &source)
{
    for (qsizetype end = path.indexOf(u'/', 1);; end = path.indexOf(u'/', end + 1)) {
        const int error =
            files.makeFolder(end < 0 ? path : path.first(end), PlatformFiles::Access::OwnerOnly);
        // Some systems answer for an existing folder on a read-only medium with that medium first.
        const bool mayExist = error == EEXIST || error == EROFS || error == EACCES;
        if (error == ENOENT)
            raiseNotSaved(Failure::PathNotFound, path, source);
        if (error != 0 && (!mayExist || (end < 0 && error != EEXIST)))
            raiseNotSaved(Failure::fromErrno(error), path, source);
        if (end < 0)
            return;
    }
}

} // namespace

IniStoredSettings::IniStoredSettings(PlatformFiles &files, std::chrono::milliseconds lockWait)
    : m_files(files), m_lockWait(lockWait)
{}

QString IniStoredSettings::get(const QString &application, const QString &section,
                               const QString &key, const QString &defaultValue) const
{
    const QString source = u"IniStoredSettings::get"_s;
    checkNames(application, section, key, source);
    return readText(m_files, application, source).value(section, key).value_or(defaultValue);
}

void IniStoredSettings::save(const QString &application, const QString &section, const QString &key,
                             const QString &value)
{
    const QString source = u"IniStoredSettings::save"_s;
    checkNames(application, section, key, source);
    if (!value.isValidUtf16())
        Failure::raise(Failure::InvalidProcedureCall, source);
    makeFolders(m_files, folderOf(application), source);

    // If no lock file can be created, the write below fails too and reports the reason.
    QLockFile lock(fileOf(application) + u".lock"_s);
    if (!lock.tryLock(static_cast<int>(m_lockWait.count())) &&
        lock.error() == QLockFile::LockFailedError)
        raiseNotSaved(Failure::PermissionDenied, fileOf(application), source);

    SettingsText text = readText(m_files, application, source);
    text.setValue(section, key, value);
    if (const int error = m_files.replace(fileOf(application), text.bytes()))
        raiseNotSaved(Failure::fromErrno(error), fileOf(application), source);
}

} // namespace norvane
