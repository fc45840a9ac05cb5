#include "TovekSMService/store/Store.h"

#include "TovekSMService/store/Transaction.h"

#include <QCryptographicHash>

namespace norvane {

using namespace Qt::StringLiterals;

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
    settings.DeviceType = setting(u"device_type"_s, u"0"_s).toInt();
    settings.PINCode = setting(u"pin_code"_s, QString());
    settings.ConnectionMode = setting(u"connection_mode"_s, u"1"_s).toInt();
    settings.Protocol = setting(u"protocol"_s, u"1"_s).toInt();
    settings.Parameter = setting(u"parameter"_s, u"COM1, 9600"_s);
    return settings;
}

void Store::setDeviceSettings(const DeviceSettings &settings)
{
    Transaction transaction(m_database, transactionKind());
    writeSetting(u"device_type"_s, QString::number(settings.DeviceType));
    writeSetting(u"pin_code"_s, settings.PINCode);
    writeSetting(u"connection_mode"_s, QString::number(settings.ConnectionMode));
    writeSetting(u"protocol"_s, QString::number(settings.Protocol));
    writeSetting(u"parameter"_s, settings.Parameter);
    transaction.commit();
}

void Store::setRecentBatches(const QString &batches)
{
    Transaction transaction(m_database, transactionKind());
    writeSetting(u"recent_batches"_s, batches);
    transaction.commit();
}

bool Store::isToRun() const
{
    return setting(u"run"_s, u"0"_s) == u"1"_s;
}

void Store::setToRun(bool run)
{
    Transaction transaction(m_database, transactionKind());
    writeSetting(u"run"_s, run ? u"1"_s : u"0"_s);
    transaction.commit();
}

QString Store::deviceImei(const QString &parameter) const
{
    return setting(u"imei_parameter"_s, QString()) == parameter ? setting(u"imei"_s, QString())
                                                                : QString();
}

void Store::setDeviceImei(const QString &parameter, const QString &imei)
{
    Transaction transaction(m_database, transactionKind());
    writeSetting(u"imei_parameter"_s, parameter);
    writeSetting(u"imei"_s, imei);
    transaction.commit();
}

void Store::setLastReset(const QString &at)
{
    Transaction transaction(m_database, transactionKind());
    writeSetting(u"last_reset"_s, at);
    transaction.commit();
}

void Store::probe()
{
    const QString name = u"probe"_s;
    Transaction transaction(m_database, transactionKind());
    const bool even = setting(name, QString()) == "even"_L1;
    writeSetting(name, even ? u"odd"_s : u"even"_s);
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

} // namespace norvane
