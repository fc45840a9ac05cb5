#include "NorvaneSMS/app/mode/ModeSettings.h"

#include "common/FailureNumbers.h"
#include "foundation/StoredBoolean.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString application()
{
    return u"Norvane"_s;
}
QString section()
{
    return u"SMS"_s;
}
QString serverModeKey()
{
    return u"ServerMode"_s;
}
QString queueFolderKey()
{
    return u"QueueFolder"_s;
}

} // namespace

ModeSettings::ModeSettings(StoredSettings &settings, const QString &programFolder)
    : m_settings(settings), m_programFolder(programFolder)
{}

bool ModeSettings::serverMode() const
{
    return toBoolean(m_settings.get(application(), section(), serverModeKey(), booleanText(true)));
}

void ModeSettings::saveServerMode(bool server)
{
    m_settings.save(application(), section(), serverModeKey(), booleanText(server));
}

void ModeSettings::repairServerMode()
{
    try {
        static_cast<void>(serverMode());
    } catch (const NumberedFailure &failure) {
        if (failure.number() != Failure::TypeMismatch)
            throw; // a store that can't be read is not an unreadable value
        saveServerMode(true);
    }
}

QString ModeSettings::queueFolder() const
{
    return m_settings.get(application(), section(), queueFolderKey(), m_programFolder);
}

void ModeSettings::saveQueueFolder(const QString &folder)
{
    m_settings.save(application(), section(), queueFolderKey(), folder);
}

} // namespace norvane
