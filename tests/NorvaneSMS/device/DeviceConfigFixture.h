#pragma once

#include "NorvaneSMS/device/DeviceConfigForm.h"
#include "NorvaneSMS/device/DeviceSettingsKeeper.h"
#include "NorvaneSMS/device/frmDeviceConfig.h"
#include "support/MemorySettings.h"
#include "support/RecordingMessageBoxes.h"
#include "support/ScriptedFolderBrowser.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <memory>

namespace norvane {

using namespace Qt::StringLiterals;

/// Keeps device settings in place of the console, and the order of what happens.
class RecordingKeeper : public DeviceSettingsKeeper
{
public:
    DeviceSettings GetDeviceSettings() override
    {
        calls << u"GetDeviceSettings"_s;
        return stored;
    }
    bool SetDeviceSettings(const DeviceSettings &settings) override
    {
        calls << u"SetDeviceSettings"_s;
        given.append(settings);
        return answer;
    }

    DeviceSettings stored;
    QList<DeviceSettings> given;
    QStringList calls;
    bool answer = true;
};

/// The device dialog over a keeper that notes, settings in memory and boxes that answer.
class DeviceConfigFixture : public ::testing::Test
{
protected:
    DeviceConfigFixture();
    ~DeviceConfigFixture() override;

    void store(const char *key, const QString &value);
    QString stored(const char *key) const;

    /// Shows the dialog and runs `act` on it, which is to end it.
    /// @return what ShowForm gives
    bool show(const std::function<void(DeviceConfigForm &)> &act);

    static void press(QWidget *button);
    static void choose(class QComboBox *list, int position);

    QString folder() const { return m_folder.path(); }

    QTemporaryDir m_folder;
    MemorySettings settings;
    RecordingKeeper keeper;
    RecordingMessageBoxes boxes;
    ScriptedFolderBrowser folders;
    frmDeviceConfig dialog;
};

} // namespace norvane
