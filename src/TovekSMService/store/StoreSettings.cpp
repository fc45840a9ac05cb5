#include "TovekSMService/store/Store.h"

#include "TovekSMService/store/Transaction.h"

#include <QCryptographicHash>

namespace {

QByteArray pinDigest(const QString &simId, const QString &pin)
{
    return QCryptographicHash::hash((simId + u'\0' + pin).toUtf8(), QCryptographicHash::Sha256);
}

} // namespace

QString Store::setting(const QString &name, const QString &absent) const
{
    Statement query(m_statements, "SELECT value FROM setting WHERE name = ?");
    query.run({name});
    return query.next() ? query.value(0).toString() : absent;
}

void Store::writeSetting(const QString &name, const QString &value)
{
    Statement(m_statements, "INSERT INTO setting (name, value) VALUES (?, ?) "
                            "ON CONFLICT (name) DO UPDATE SET value = excluded.value")
        .run({name, notNull(value)});
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
    Transaction transaction(m_database, transactionKind());
    writeSetting(QStringLiteral("device_type"), QString::number(settings.DeviceType));
    writeSetting(QStringLiteral("pin_code"), settings.PINCode);
    writeSetting(QStringLiteral("connection_mode"), QString::number(settings.ConnectionMode));
    writeSetting(QStringLiteral("protocol"), QString::number(settings.Protocol));
    writeSetting(QStringLiteral("parameter"), settings.Parameter);
    transaction.commit();
}

void Store::setRecentBatches(const QString &batches)
{
    Transaction transaction(m_database, transactionKind());
    writeSetting(QStringLiteral("recent_batches"), batches);
    transaction.commit();
}

bool Store::isToRun() const
{
    return setting(QStringLiteral("run"), QStringLiteral("0")) == QStringLiteral("1");
}

void Store::setToRun(bool run)
{
    Transaction transaction(m_database, transactionKind());
    writeSetting(QStringLiteral("run"), run ? QStringLiteral("1") : QStringLiteral("0"));
    transaction.commit();
}

QString Store::deviceImei(const QString &parameter) const
{
    return setting(QStringLiteral("imei_parameter"), QString()) == parameter
               ? setting(QStringLiteral("imei"), QString())
               : QString();
}

void Store::setDeviceImei(const QString &parameter, const QString &imei)
{
    Transaction transaction(m_database, transactionKind());
    writeSetting(QStringLiteral("imei_parameter"), parameter);
    writeSetting(QStringLiteral("imei"), imei);
    transaction.commit();
}

void Store::setLastReset(const QString &at)
{
    Transaction transaction(m_database, transactionKind());
    writeSetting(QStringLiteral("last_reset"), at);
    transaction.commit();
}

void Store::probe()
{
    const QString name = QStringLiteral("probe");
    Transaction transaction(m_database, transactionKind());
    const bool even = setting(name, QString()) == QLatin1String("even");
    writeSetting(name, even ? QStringLiteral("odd") : QStringLiteral("even"));
    transaction.commit();
}

void Store::beginIdsAt(qint64 id)
{
    Transaction transaction(m_database, transactionKind());
    for (const char *const table : {"message", "outcome"}) {
        Statement(m_statements, "DELETE FROM sqlite_sequence WHERE name = ? AND seq < ?")
            .run({QLatin1String(table), id});
        Statement(m_statements,
                  "INSERT INTO sqlite_sequence (name, seq) SELECT ?, ? WHERE NOT EXISTS "
                  "(SELECT 1 FROM sqlite_sequence WHERE name = ?)")
            .run({QLatin1String(table), id, QLatin1String(table)});
    }
    transaction.commit();
}

PinHistory Store::pinHistory(const QString &simId, const QString &pin) const
{
    Statement query(m_statements, "SELECT history FROM pin_attempt WHERE sim = ? AND pin = ?");
    query.run({simId, pinDigest(simId, pin)});
    return query.next() ? static_cast<PinHistory>(query.value(0).toInt()) : PinHistory::NeverTried;
}

void Store::setPinHistory(const QString &simId, const QString &pin, PinHistory history,
                          const QString &at)
{
    write("INSERT INTO pin_attempt (sim, pin, history, at) VALUES (?, ?, ?, ?) "
          "ON CONFLICT (sim, pin) DO UPDATE SET history = excluded.history, at = excluded.at",
          {simId, pinDigest(simId, pin), static_cast<int>(history), at});
}
