#pragma once

#include "TovekSMService/store/MessageQueue.h"
#include "TovekSMService/store/StoreFailure.h"

#include <QList>
#include <QString>

#include <optional>

namespace norvane {

class StoreDatabase;

/// An engine as the others see it.
struct EngineEntry
{
    QString name;
    QString host;
    QString device;
    QString state;
    int silentSeconds = 0; ///< since it was seen last
    QString seen;          ///< "yyyy-MM-ddTHH:mm:ss", of the database's clock
    int sentToday = 0;
};

/// A message that another engine left in the middle, and the failure that it is now.
struct TakenOver
{
    QString engine;
    QString phone;
    QString text;
    qint64 outcome = 0;
    qint64 message = 0;
};

/// The engines that share a queue, and this one among them. An engine is known by its name; each
/// time it comes up, and each time another one has taken over what it left in the middle, it gets
/// another epoch. Nothing of an epoch that is over begins any more.
class EngineRegister
{
public:
    /// Who this engine is.
    struct Identity
    {
        QString name;
        QString host;     ///< and folder, to be shown
        QString instance; ///< by which an engine that comes back is told from another of its name
    };
    /// An engine is held for dead when it has been silent for this long.
    static constexpr int silentSeconds = 30;
    /// And what it holds between two parts is given up when it has been for this long.
    static constexpr int lostSeconds = 3600;

    /// @param database  that the engines share; must outlive this object
    EngineRegister(StoreDatabase &database, const Identity &identity)
        : m_database(database), m_identity(identity)
    {}

    /// Begins an epoch of this engine. Fails where another one of that name is at work.
    [[nodiscard]] StoreResult<> enroll();
    /// Takes over which one this engine is, without a sign of life; nothing if it never came up.
    [[nodiscard]] StoreResult<> lookUp();
    int id() const { return m_id; }
    qint64 epoch() const { return m_epoch; }
    const QString &name() const { return m_identity.name; }

    /// Shows that this engine lives.
    /// @return false if its epoch is over
    [[nodiscard]] StoreResult<bool> showLife(const QString &device, const QString &state);
    /// How far the database's clock, in its zone, is ahead of `wallClock`, in seconds.
    [[nodiscard]] StoreResult<qint64> clockDifference(const QString &wallClock) const;

    /// Reports as failed, by `code` and in this engine's place, what engines that are held for dead
    /// left in the middle.
    /// @param at  "yyyy-MM-ddTHH:mm:ss"
    [[nodiscard]] StoreResult<QList<TakenOver>> takeOver(qint32 code, const QString &at);

    /// By name.
    [[nodiscard]] StoreResult<QList<EngineEntry>> all() const;
    /// Gives up the engine of that name: what it holds fails by `code`, to be told by this one.
    /// @return nothing for a name that isn't known
    [[nodiscard]] StoreResult<std::optional<QList<TakenOver>>>
    retire(const QString &name, qint32 code, const QString &at);

private:
    struct Silent
    {
        int id = 0;
        QString name;
        bool isLost = false; ///< also what it holds between two parts
    };

    StoreResult<QList<Silent>> silentOnes() const;
    StoreResult<QList<TakenOver>> finishHeld(const Silent &engine, qint32 code, const QString &at);

    StoreDatabase &m_database;
    const Identity m_identity;
    int m_id = 0;
    qint64 m_epoch = 0;
};

} // namespace norvane
