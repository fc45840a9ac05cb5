#include "TovekSMService/store/EngineSettingsStore.h"

#include "TovekSMService/store/StoreDatabase.h"

namespace norvane {

using namespace Qt::StringLiterals;

DeviceSettings EngineSettingsStore::deviceSettings() const
{
    // What the device dialog proposes, until someone has set anything.
    DeviceSettings settings;
    settings.DeviceType = m_settings.value(u"device_type"_s, u"0"_s).toInt();
    settings.PINCode = m_settings.value(u"pin_code"_s);
    settings.ConnectionMode = m_settings.value(u"connection_mode"_s, u"1"_s).toInt();
    settings.Protocol = m_settings.value(u"protocol"_s, u"1"_s).toInt();
    settings.Parameter = m_settings.value(u"parameter"_s, u"COM1, 9600"_s);
    return settings;
}

void EngineSettingsStore::setDeviceSettings(const DeviceSettings &settings)
{
    m_database.together([&] {
        m_settings.write(u"device_type"_s, QString::number(settings.DeviceType));
        m_settings.write(u"pin_code"_s, settings.PINCode);
        m_settings.write(u"connection_mode"_s, QString::number(settings.ConnectionMode));
        m_settings.write(u"protocol"_s, QString::number(settings.Protocol));
        m_settings.write(u"parameter"_s, settings.Parameter);
    });
}

bool EngineSettingsStore::isToRun() const
{
    return m_settings.value(u"run"_s) == u"1"_s;
}

void EngineSettingsStore::setToRun(bool run)
{
    m_settings.write(u"run"_s, run ? u"1"_s : u"0"_s);
}

QString EngineSettingsStore::deviceImei(const QString &parameter) const
{
    const bool isKnown = m_settings.value(u"imei_parameter"_s) == parameter;
    return isKnown ? m_settings.value(u"imei"_s) : QString();
}

void EngineSettingsStore::setDeviceImei(const QString &parameter, const QString &imei)
{
    m_database.together([&] {
        m_settings.write(u"imei_parameter"_s, parameter);
        m_settings.write(u"imei"_s, imei);
    });
}

QString EngineSettingsStore::lastReset() const
{
    return m_settings.value(u"last_reset"_s);
}

void EngineSettingsStore::setLastReset(const QString &at)
{
    m_settings.write(u"last_reset"_s, at);
}

quint16 EngineSettingsStore::nextReference()
{
    const QString name = u"concatenation_reference"_s;
    const auto next = static_cast<quint16>(m_settings.value(name, u"0"_s).toUInt() + 1U);
    m_settings.write(name, QString::number(next));
    return next;
}

} // namespace norvane
