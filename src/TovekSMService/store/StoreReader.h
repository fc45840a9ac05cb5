#pragma once

#include "TovekSMService/store/StoreFailure.h"
#include "contract/Messages.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

#include <functional>

namespace norvane {

/// A second look at a store's file that makes and changes nothing, while an engine may be at work
/// on it.
class StoreReader
{
public:
    /// It is not open yet.
    explicit StoreReader(const QString &file);
    StoreReader(const StoreReader &) = delete;
    StoreReader &operator=(const StoreReader &) = delete;
    ~StoreReader();

    /// Fails where there is no such file, or one of another version.
    [[nodiscard]] StoreResult<> open();

    /// Hands out the outcomes from `since` on ("yyyy-MM-ddTHH:mm:ss", or the beginning of it), in
    /// their order.
    [[nodiscard]] StoreResult<> outcomes(const QString &since,
                                         const std::function<void(const OutcomeRow &)> &take) const;

    /// Hands out the messages received from `since` on, in their order.
    [[nodiscard]] StoreResult<>
    received(const QString &since, const std::function<void(const ReceivedMessage &)> &take) const;

    /// Writes everything as it is at one moment to `file`, which must be missing or empty.
    [[nodiscard]] StoreResult<> copyTo(const QString &file) const;

private:
    StoreResult<> each(const QString &text, const QString &since,
                       const std::function<void(const QSqlQuery &)> &take) const;

    const QString m_file;
    QString m_connection;
    QSqlDatabase m_database;
};

} // namespace norvane
