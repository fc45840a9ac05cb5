#pragma once

#include <QList>
#include <QString>

#include <optional>

namespace norvane {

/// Warnings that no console has acknowledged yet. Each has a number of its own below 0, which is
/// what an outcome's id can't be.
class UnacknowledgedWarnings
{
public:
    static constexpr qsizetype maxWarnings = 50;

    struct Warning
    {
        qint32 code = 0;
        QString text;

        bool operator==(const Warning &) const = default;
    };
    struct Entry
    {
        qint64 report = 0;
        Warning warning;
    };

    /// @return the warning's number; 0 when there are too many and it isn't kept. A warning that is
    ///         kept already has the number that it has.
    qint64 add(const Warning &warning);
    /// @return the warning of that number, which is kept no longer
    std::optional<Warning> remove(qint64 report);
    const QList<Entry> &entries() const { return m_entries; }

private:
    QList<Entry> m_entries;
    qint64 m_lastReport = 0;
};

} // namespace norvane
