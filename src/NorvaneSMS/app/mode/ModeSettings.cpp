#include "NorvaneSMS/app/mode/ModeSettings.h"

#include "common/FailureNumbers.h"
#include "foundation/StoredBoolean.h"

namespace {

QString application()
{
    return QStringLiteral("Norvane");
}
QString section()
{
    return QStringLiteral("SMS");
}
QString serverModeKey()
{
    return QStringLiteral("ServerMode");
}
QString queueFolderKey()
{
    return QStringLiteral("QueueFolder");
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
