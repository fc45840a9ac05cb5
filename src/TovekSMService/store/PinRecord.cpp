#include "TovekSMService/store/PinRecord.h"

#include "TovekSMService/store/StoreDatabase.h"

#include <QCryptographicHash>

namespace norvane {

namespace {

QByteArray pinDigest(const QString &simId, const QString &pin)
{
    return QCryptographicHash::hash((simId + u'\0' + pin).toUtf8(), QCryptographicHash::Sha256);
}

PinHistory historyOf(const StoreRow &row)
{
    return static_cast<PinHistory>(row.value(0).toInt());
}

} // namespace

StoreResult<PinHistory> PinRecord::history(const QString &simId, const QString &pin) const
{
    return m_database
        .row("SELECT history FROM pin_attempt WHERE sim = ? AND pin = ?",
             {simId, pinDigest(simId, pin)}, historyOf)
        .map(
            [](std::optional<PinHistory> found) { return found.value_or(PinHistory::NeverTried); });
}

StoreResult<> PinRecord::setHistory(const QString &simId, const QString &pin, PinHistory history,
                                    const QString &at)
{
    return m_database.write("INSERT INTO pin_attempt (sim, pin, history, at) VALUES (?, ?, ?, ?) "
                            "ON CONFLICT (sim, pin) DO UPDATE SET history = excluded.history, "
                            "at = excluded.at",
                            {simId, pinDigest(simId, pin), static_cast<int>(history), at});
}

} // namespace norvane
