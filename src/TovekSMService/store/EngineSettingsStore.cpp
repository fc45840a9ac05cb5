#include "TovekSMService/store/EngineSettingsStore.h"

#include "TovekSMService/store/StoreDatabase.h"

namespace norvane {

using namespace Qt::StringLiterals;

StoreResult<DeviceSettings> EngineSettingsStore::deviceSettings() const
{
    DeviceSettings settings;
    const auto read = [this](const QString &name, const QString &absent, QString &field) {
        return m_settings.value(name, absent).map([&](const QString &value) { field = value; });
    };
    const auto readNumber = [this](const QString &name, const QString &absent, qint32 &field) {
        return m_settings.value(name, absent).map([&](const QString &value) {
            field = value.toInt();
        });
    };
    // What the device dialog proposes, until someone has set anything.
    return readNumber(u"device_type"_s, u"0"_s, settings.DeviceType)
        .and_then([&] { return read(u"pin_code"_s, {}, settings.PINCode); })
        .and_then([&] { return readNumber(u"connection_mode"_s, u"1"_s, settings.ConnectionMode); })
        .and_then([&] { return readNumber(u"protocol"_s, u"1"_s, settings.Protocol); })
        .and_then([&] { return read(u"parameter"_s, u"COM1, 9600"_s, settings.Parameter); })
        .map([&] { return settings; });
}

StoreResult<> EngineSettingsStore::setDeviceSettings(const DeviceSettings &settings)
{
    const auto write = [this](const QString &name, const QString &value) {
        return [this, name, value] { return m_settings.write(name, value); };
    };
    return m_database.together([&] {
        return m_settings.write(u"device_type"_s, QString::number(settings.DeviceType))
            .and_then(write(u"pin_code"_s, settings.PINCode))
            .and_then(write(u"connection_mode"_s, QString::number(settings.ConnectionMode)))
            .and_then(write(u"protocol"_s, QString::number(settings.Protocol)))
            .and_then(write(u"parameter"_s, settings.Parameter));
    });
}

StoreResult<bool> EngineSettingsStore::isToRun() const
{
    return m_settings.value(u"run"_s).map([](const QString &run) { return run == "1"_L1; });
}

StoreResult<> EngineSettingsStore::setToRun(bool run)
{
    return m_settings.write(u"run"_s, run ? u"1"_s : u"0"_s);
}

StoreResult<QString> EngineSettingsStore::deviceImei(const QString &parameter) const
{
    return m_settings.value(u"imei_parameter"_s)
        .and_then([&](const QString &known) -> StoreResult<QString> {
            return known == parameter ? m_settings.value(u"imei"_s) : QString();
        });
}

StoreResult<> EngineSettingsStore::setDeviceImei(const QString &parameter, const QString &imei)
{
    return m_database.together([&] {
        return m_settings.write(u"imei_parameter"_s, parameter).and_then([&] {
            return m_settings.write(u"imei"_s, imei);
        });
    });
}

StoreResult<QString> EngineSettingsStore::lastReset() const
{
    return m_settings.value(u"last_reset"_s);
}

StoreResult<> EngineSettingsStore::setLastReset(const QString &at)
{
    return m_settings.write(u"last_reset"_s, at);
}

StoreResult<quint16> EngineSettingsStore::nextReference()
{
    const QString name = u"concatenation_reference"_s;
    return m_settings.value(name, u"0"_s).and_then([&](const QString &last) {
        const auto next = static_cast<quint16>(last.toUInt() + 1U);
        return m_settings.write(name, QString::number(next)).map([next] { return next; });
    });
}

} // namespace norvane
