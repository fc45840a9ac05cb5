#pragma once

#include <QString>

#include <limits>
#include <optional>

namespace norvane {

/// How far somebody has read, as they are told. Each place is an id below which the next rows are.
struct HistoryCursor
{
    qint64 queue = std::numeric_limits<qint64>::max();
    qint64 outcomes = std::numeric_limits<qint64>::max();

    /// Nothing for what isn't written by text(); the beginning for an empty text.
    static std::optional<HistoryCursor> of(const QString &text);
    QString text() const;

    bool operator==(const HistoryCursor &) const = default;
};

/// The same of received messages.
struct InboxCursor
{
    qint64 received = std::numeric_limits<qint64>::max();

    static std::optional<InboxCursor> of(const QString &text);
    QString text() const;

    bool operator==(const InboxCursor &) const = default;
};

} // namespace norvane
