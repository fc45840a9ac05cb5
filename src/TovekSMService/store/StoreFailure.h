#pragma once

#include "common/Result.h"

#include <QSqlError>
#include <QString>

namespace norvane {

/// A database that could not do what it was asked. Nothing of the failed step was kept.
class StoreFailure
{
public:
    enum class Kind {
        Busy,     ///< another process has it locked
        Full,     ///< no room on the disk
        ReadOnly, ///< the file or its folder can't be written
        Corrupt,  ///< the file is no database, or a damaged one
        TooNew,   ///< the file was written by a later version
        Away,     ///< the database can't be reached
        Exists,   ///< what was to be added is there
        Other,
    };

    StoreFailure(Kind kind, const QString &text) : m_kind(kind), m_text(text) {}
    explicit StoreFailure(const QSqlError &error);

    Kind kind() const { return m_kind; }
    QString text() const { return m_text; }

private:
    Kind m_kind;
    QString m_text;
};

/// What an operation of the store gives.
template <typename Value = void>
using StoreResult = Result<Value, StoreFailure>;

} // namespace norvane
