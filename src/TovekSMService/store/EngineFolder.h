#pragma once

#include <QString>
#include <QStringList>

namespace norvane {

class EngineName;

/// Where an engine keeps what is its own, for its owner alone: `$XDG_DATA_HOME/TovekSMService`, or
/// `engines/NAME` in there for a named one.
class EngineFolder
{
public:
    explicit EngineFolder(const EngineName &name);

    const QString &path() const { return m_folders.constLast(); }
    /// Makes the folder if need be.
    /// @return false when it can't be made
    [[nodiscard]] bool make() const;

    QString storeFile() const;
    QString lockFile() const;
    /// Where a console that starts the engine leads its standard error.
    QString logFile() const;

private:
    QStringList m_folders; ///< from that of all engines down to that of this one
};

} // namespace norvane
