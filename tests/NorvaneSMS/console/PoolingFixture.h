#pragma once

#include "NorvaneSMS/console/ConsoleFixture.h"

#include <QTemporaryDir>

#include <functional>

namespace norvane {

/// A server's console over a queue folder of its own. What it does that was not called for is
/// noted: an end by a failure, and message boxes.
class Pooling : public ConsoleFixture
{
protected:
    Pooling();
    ~Pooling() override;

    /// One tick of the timer, handled to its end.
    void tick();
    /// Puts a file of one record into the folder, whose message is the file's name.
    void drop(const QString &name);
    void dropMany(int count);
    QString path(const QString &name) const { return queue.filePath(name); }
    bool isThere(const QString &name) const;
    QStringList names() const;

    /// The messages that reached the engine since the last call.
    QStringList takeMessages();
    /// How many messages have reached the engine since the last takeMessages().
    qsizetype messages() const;

    /// Runs `action` when events are processed after the next message has reached the engine.
    void whenEventsAreProcessed(std::function<void()> action);

    const QTemporaryDir queue;
    int exitCode = 0;

private:
    std::function<void(int)> m_previous;
};

} // namespace norvane
