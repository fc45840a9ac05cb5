#pragma once

#include "NorvaneSMS/console/frmSMSClient.h"
#include "support/ManualTimers.h"
#include "support/MemorySettings.h"
#include "support/NotedWaiting.h"
#include "support/RecordingEngine.h"
#include "support/RecordingMessageBoxes.h"
#include "support/ScriptedFolderBrowser.h"
#include "support/ScriptedStreams.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace norvane {

/// The console's window over a recording engine, with the Spanish texts, a clock that stands still,
/// timers that tick when told, and message boxes that answer by themselves.
class ConsoleFixture : public ::testing::Test
{
protected:
    ConsoleFixture();
    ~ConsoleFixture() override;

    void storeMode(bool server);
    void storeQueueFolder(const QString &folder);
    /// Makes the window, which is not loaded yet.
    void make();
    /// Makes the window and loads it.
    void load();
    void loadAsServer();
    void loadAsClient();
    /// Loads and shows it.
    void show();

    template <typename Control = QWidget>
    Control *control(const char *name) const
    {
        auto *const found = console->findChild<Control *>(QLatin1String(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    /// The engine object in use; null on a client.
    RecordingEngine *engine() const { return m_engines.isEmpty() ? nullptr : m_engines.last(); }
    QString terminal() const;
    QString text(const char *label) const;
    QString caption(const char *frame) const;
    QStringList takeCalls();

    MemorySettings settings;
    RecordingEngine::Script script;
    std::function<void()> inReleaseGlobals; ///< runs while the globals are being released
    RecordingMessageBoxes boxes;
    ScriptedFolderBrowser folders;
    ManualTimers timers;
    ScriptedStreams streams;
    NotedWaiting waiting;
    ImportEnvironment importing;
    QDateTime now{QDate(2026, 11, 20), QTime(9, 30, 15), Qt::UTC};
    QLocale locale{QLocale::Spanish, QLocale::Spain};
    std::unique_ptr<frmSMSClient> console;

private:
    ConsoleEnvironment environment();

    QList<RecordingEngine *> m_engines; ///< those that still live, the newest last
};

} // namespace norvane
