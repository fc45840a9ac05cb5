#include "TovekSMService/store/EngineRegister.h"

#include "TovekSMService/store/StoreDatabase.h"

namespace norvane {

using namespace Qt::StringLiterals;

StoreResult<> EngineRegister::enroll()
{
    struct Epoch
    {
        int id = 0;
        qint64 epoch = 0;
    };
    // Of two that come at once the later one sees the earlier one's row.
    const auto enrolled = m_database.together([&] {
        return m_database
            .write("INSERT INTO engine (name, host) VALUES (?, ?) ON CONFLICT (name) DO NOTHING",
                   {m_identity.name, m_identity.host})
            .and_then([&] {
                return m_database.row(
                    "UPDATE engine SET epoch = epoch + 1, host = ?, instance = ?::text, "
                    "retired = false, seen = clock_timestamp() WHERE name = ? AND "
                    "(instance = ? OR instance = '' OR "
                    "seen < clock_timestamp() - make_interval(secs => ?)) RETURNING id, epoch",
                    {m_identity.host, m_identity.instance, m_identity.name, m_identity.instance,
                     silentSeconds},
                    [](const StoreRow &row) {
                        return Epoch{row.value(0).toInt(), row.value(1).toLongLong()};
                    });
            });
    });
    if (!enrolled)
        return failed(enrolled.error());
    if (!*enrolled)
        return failed(StoreFailure(StoreFailure::Kind::Busy,
                                   u"another engine has the name %1: [Queue] Name= tells them "
                                   "apart"_s.arg(m_identity.name)));
    m_id = (*enrolled)->id;
    m_epoch = (*enrolled)->epoch;
    return {};
}

StoreResult<bool> EngineRegister::showLife(const QString &device, const QString &state)
{
    return m_database
        .writeAndCount("UPDATE engine SET seen = clock_timestamp(), device = ?, state = ? "
                       "WHERE id = ? AND epoch = ?",
                       {device, state, m_id, m_epoch})
        .map([](int rows) { return rows > 0; });
}

StoreResult<> EngineRegister::lookUp()
{
    return m_database
        .row("SELECT id FROM engine WHERE name = ?", {m_identity.name},
             [](const StoreRow &row) { return row.value(0).toInt(); })
        .map([this](std::optional<int> id) { m_id = id.value_or(0); });
}

StoreResult<qint64> EngineRegister::clockDifference(const QString &wallClock) const
{
    return m_database
        .row("SELECT extract(epoch FROM clock_timestamp() AT TIME ZONE current_setting('TimeZone') "
             "- ?::timestamp)::bigint",
             {wallClock}, [](const StoreRow &row) { return row.value(0).toLongLong(); })
        .map([](std::optional<qint64> seconds) { return seconds.value_or(0); });
}

/// Those that hold something. One that is at work at this moment has its row locked, and isn't
/// among them.
StoreResult<QList<EngineRegister::Silent>> EngineRegister::silentOnes() const
{
    return m_database.rows(
        "SELECT id, name, seen < clock_timestamp() - make_interval(secs => ?) FROM engine "
        "WHERE id <> ? AND seen < clock_timestamp() - make_interval(secs => ?) AND "
        "(EXISTS (SELECT 1 FROM message WHERE message.engine = engine.id) OR "
        "(seen < clock_timestamp() - make_interval(secs => ?) AND EXISTS (SELECT 1 FROM outcome "
        "WHERE reporter = engine.id AND reported = 0))) "
        "ORDER BY id FOR UPDATE SKIP LOCKED",
        {lostSeconds, m_id, silentSeconds, lostSeconds}, [](const StoreRow &row) {
            return Silent{row.value(0).toInt(), row.value(1).toString(), row.value(2).toBool()};
        });
}

StoreResult<QList<TakenOver>> EngineRegister::takeOver(qint32 code, const QString &at)
{
    return m_database.together([&]() -> StoreResult<QList<TakenOver>> {
        const StoreResult<QList<Silent>> engines = silentOnes();
        if (!engines)
            return failed(engines.error());
        QList<TakenOver> all;
        for (const Silent &engine : *engines) {
            const StoreResult<QList<TakenOver>> taken = finishHeld(engine, code, at);
            if (!taken)
                return failed(taken.error());
            all += *taken;
        }
        return all;
    });
}

/// Ends the engine's epoch, and what it holds with it. The outcome keeps the epoch in which the
/// part began to leave: what that engine knows of it, it may still say.
StoreResult<QList<TakenOver>> EngineRegister::finishHeld(const Silent &engine, qint32 code,
                                                         const QString &at)
{
    const auto taken = m_database.rows(
        "WITH gone AS (DELETE FROM message WHERE engine = ? AND (state = 1 OR ?) "
        "RETURNING id, original_date, phone, text, engine, epoch, queued_at), "
        "ended AS (UPDATE engine SET epoch = epoch + 1, queued = queued - (SELECT count(*) FROM "
        "gone) WHERE id = ? AND EXISTS (SELECT 1 FROM gone)), "
        "kept AS (INSERT INTO outcome (message_id, delivery_date, phone, text, code, at, reported, "
        "engine, epoch, reporter, queued_at) SELECT id, original_date, phone, text, ?::int, "
        "?::text, 0, engine, epoch, ?::int, queued_at FROM gone ORDER BY id RETURNING id, phone, "
        "text, message_id) "
        "SELECT phone, text, id, message_id FROM kept ORDER BY id",
        {engine.id, engine.isLost, engine.id, code, at, m_id}, [&](const StoreRow &row) {
            return TakenOver{engine.name, row.value(0).toString(), row.value(1).toString(),
                             row.value(2).toLongLong(), row.value(3).toLongLong()};
        });
    if (!taken || !engine.isLost)
        return taken;
    // Nobody else would tell what it could not tell.
    return m_database
        .write("UPDATE outcome SET reporter = ? WHERE reporter = ? AND reported = 0",
               {m_id, engine.id})
        .map([&] { return *taken; });
}

StoreResult<QList<EngineEntry>> EngineRegister::all() const
{
    return m_database.rows(
        "SELECT name, host, device, CASE WHEN retired THEN 'retired' ELSE state END, "
        "extract(epoch FROM clock_timestamp() - seen)::int, "
        "to_char(seen, 'YYYY-MM-DD\"T\"HH24:MI:SS'), "
        "CASE WHEN sent_day = CURRENT_DATE THEN sent ELSE 0 END FROM engine ORDER BY name",
        {}, [](const StoreRow &row) {
            return EngineEntry{row.value(0).toString(), row.value(1).toString(),
                               row.value(2).toString(), row.value(3).toString(),
                               row.value(4).toInt(),    row.value(5).toString(),
                               row.value(6).toInt()};
        });
}

StoreResult<std::optional<QList<TakenOver>>> EngineRegister::retire(const QString &name,
                                                                    qint32 code, const QString &at)
{
    using Taken = std::optional<QList<TakenOver>>;
    return m_database.together([&]() -> StoreResult<Taken> {
        const auto id =
            m_database.row("UPDATE engine SET retired = true, epoch = epoch + 1 "
                           "WHERE name = ? RETURNING id",
                           {name}, [](const StoreRow &row) { return row.value(0).toInt(); });
        if (!id)
            return failed(id.error());
        if (!*id)
            return Taken();
        return finishHeld({**id, name, true}, code, at).map([](const QList<TakenOver> &taken) {
            return Taken(taken);
        });
    });
}

} // namespace norvane
