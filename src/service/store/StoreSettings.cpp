#include "service/store/Store.h"

#include "service/store/Transaction.h"

#include <QCryptographicHash>

namespace {

QByteArray pinDigest(const QString &simId, const QString &pin)
{
    return QCryptographicHash::hash((simId + u'\0' + pin).toUtf8(), QCryptographicHash::Sha256);
}

} // namespace

QString Store::setting(const QString &name, const QString &absent) const
{
    QSqlQuery query =
        prepared(m_database, QStringLiteral("SELECT value FROM setting WHERE name = ?"));
    query.bindValue(0, name);
    execute(query);
    return query.next() ? query.value(0).toString() : absent;
}

void Store::writeSetting(const QString &name, const QString &value)
{
    QSqlQuery query = prepared(
        m_database, QStringLiteral("INSERT INTO setting (name, value) VALUES (?, ?) "
                                   "ON CONFLICT (name) DO UPDATE SET value = excluded.value"));
    query.bindValue(0, name);
    query.bindValue(1, notNull(value));
    execute(query);
}

DeviceSettings Store::deviceSettings() const
{
    // What the device dialog proposes, until someone has set anything.
    DeviceSettings settings;
    settings.DeviceType = setting(QStringLiteral("device_type"), QStringLiteral("0")).toInt();
    settings.PINCode = setting(QStringLiteral("pin_code"), QString());
    settings.ConnectionMode =
        setting(QStringLiteral("connection_mode"), QStringLiteral("1")).toInt();
    settings.Protocol = setting(QStringLiteral("protocol"), QStringLiteral("1")).toInt();
    settings.Parameter = setting(QStringLiteral("parameter"), QStringLiteral("COM1, 9600"));
    return settings;
}

void Store::setDeviceSettings(const DeviceSettings &settings)
{
    Transaction transaction(m_database);
    writeSetting(QStringLiteral("device_type"), QString::number(settings.DeviceType));
    writeSetting(QStringLiteral("pin_code"), settings.PINCode);
    writeSetting(QStringLiteral("connection_mode"), QString::number(settings.ConnectionMode));
    writeSetting(QStringLiteral("protocol"), QString::number(settings.Protocol));
    writeSetting(QStringLiteral("parameter"), settings.Parameter);
    transaction.commit();
}

bool Store::isToRun() const
{
    return setting(QStringLiteral("run"), QStringLiteral("0")) == QStringLiteral("1");
}

void Store::setToRun(bool run)
{
    Transaction transaction(m_database);
    writeSetting(QStringLiteral("run"), run ? QStringLiteral("1") : QStringLiteral("0"));
    transaction.commit();
}

PinHistory Store::pinHistory(const QString &simId, const QString &pin) const
{
    QSqlQuery query = prepared(
        m_database, QStringLiteral("SELECT history FROM pin_attempt WHERE sim = ? AND pin = ?"));
    query.bindValue(0, simId);
    query.bindValue(1, pinDigest(simId, pin));
    execute(query);
    return query.next() ? static_cast<PinHistory>(query.value(0).toInt()) : PinHistory::NeverTried;
}

void Store::setPinHistory(const QString &simId, const QString &pin, PinHistory history,
                          const QString &at)
{
    Transaction transaction(m_database);
    QSqlQuery query = prepared(
        m_database,
        QStringLiteral("INSERT INTO pin_attempt (sim, pin, history, at) VALUES (?, ?, ?, ?) "
                       "ON CONFLICT (sim, pin) DO UPDATE SET history = excluded.history, "
                       "at = excluded.at"));
    query.bindValue(0, simId);
    query.bindValue(1, pinDigest(simId, pin));
    query.bindValue(2, static_cast<int>(history));
    query.bindValue(3, at);
    execute(query);
    transaction.commit();
}
