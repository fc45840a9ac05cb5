#pragma once

#include "TovekSMService/store/ReportSource.h"
#include "contract/Messages.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QString>

#include <functional>

namespace norvane {

/// A second look at a store's file that makes and changes nothing, while an engine may be at work
/// on it.
class StoreReader : public ReportSource
{
public:
    /// It is not open yet.
    explicit StoreReader(const QString &file);
    StoreReader(const StoreReader &) = delete;
    StoreReader &operator=(const StoreReader &) = delete;
    ~StoreReader() override;

    /// Fails where there is no such file, or one of another version.
    [[nodiscard]] StoreResult<> open();

    StoreResult<> outcomes(const QString &since,
                           const std::function<void(const OutcomeRow &)> &take) const override;
    StoreResult<> received(const QString &since,
                           const std::function<void(const ReceivedMessage &)> &take) const override;

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
