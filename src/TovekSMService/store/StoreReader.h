#pragma once

#include "TovekSMService/store/StoreFailure.h"

#include <QSqlDatabase>
#include <QString>

#include <functional>

namespace norvane {

/// One row of the outcome log.
struct OutcomeRow
{
    QString at; ///< "yyyy-MM-ddTHH:mm:ss"
    QString deliveryDate;
    QString phone;
    QString text;
    qint32 code = 0;   ///< 1 sent, else the error code
    QString reference; ///< the network's, of the last part; empty for none
};

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

    /// Writes everything as it is at one moment to `file`, which must be missing or empty.
    [[nodiscard]] StoreResult<> copyTo(const QString &file) const;

private:
    const QString m_file;
    QString m_connection;
    QSqlDatabase m_database;
};

} // namespace norvane
