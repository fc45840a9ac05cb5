#pragma once

#include "NorvaneSMS/console/ConsoleControls.h"
#include "contract/SMSManager.h"
#include "support/LoadedLanguage.h"
#include "support/RecordingEngine.h"
#include "support/RecordingMessageBoxes.h"

#include <QLocale>
#include <QWidget>

#include <gtest/gtest.h>

#include <memory>

namespace norvane {

/// The console's controls in a window without handlers, over a recording engine, with the Spanish
/// texts.
class ControlsFixture : public testing::Test
{
protected:
    void makeEngine() { m_engine = std::make_unique<RecordingEngine>(m_script); }
    QStringList takeCalls() { return std::exchange(m_script.calls, {}); }

    const LoadedLanguage m_language{u"ESN"_s};
    RecordingMessageBoxes m_boxes;
    RecordingEngine::Script m_script;
    std::unique_ptr<SMSManager> m_engine;
    const QLocale m_locale{QLocale::Spanish, QLocale::Spain};
    QWidget m_window;
    const ConsoleControls m_controls{&m_window};
};

} // namespace norvane
