#pragma once

#include "harness/Ledger.h"

#include <QByteArray>

#include <optional>

namespace norvane {

/// Looks into an engine's store from outside, changing nothing: neither a row nor the files, so
/// that what a crash left is there for the next engine.
class StoreReader
{
public:
    explicit StoreReader(QString file) : m_file(std::move(file)) {}

    /// Whether a part with this SHA-256 is noted as leaving.
    /// @return nothing when the store can't be read
    std::optional<bool> isLeaving(const QByteArray &partHash) const;
    /// Adds what waits, what became of the others, and what was received.
    /// @return false when the store can't be read
    bool read(Account &account) const;
    /// Messages that are due by `moment` ("yyyy-MM-ddTHH:mm:ss"), -1 when the store can't be read.
    int due(const QString &moment) const;
    /// Messages of a shared queue of which is kept what became of them, to be handed over.
    /// @return their ids; nothing when the store can't be read
    std::optional<QList<qint64>> kept() const;
    /// What SQLite finds wrong with the file, "ok" for nothing.
    QString check() const;

private:
    QString m_file;
};

} // namespace norvane
