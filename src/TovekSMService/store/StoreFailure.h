#pragma once

#include <QSqlError>
#include <QString>

#include <stdexcept>

namespace norvane {

/// A database that could not do what it was asked. Nothing of the failed step was kept.
class StoreFailure : public std::runtime_error
{
public:
    enum class Kind {
        Busy,     ///< another process has it locked
        Full,     ///< no room on the disk
        ReadOnly, ///< the file or its folder can't be written
        Corrupt,  ///< the file is no database, or a damaged one
        TooNew,   ///< the file was written by a later version
        Other,
    };

    StoreFailure(Kind kind, const QString &text);
    explicit StoreFailure(const QSqlError &error);

    Kind kind() const { return m_kind; }
    QString text() const { return QString::fromUtf8(what()); }

private:
    Kind m_kind;
};

} // namespace norvane
