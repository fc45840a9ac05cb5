#pragma once

#include "NorvaneSMS/app/mode/ModeSettings.h"
#include "NorvaneSMS/device/FolderBrowser.h"

#include <QObject>

#include <memory>

namespace norvane {

class DeviceConfigForm;
class DeviceSettingsKeeper;

/// The dialog that says what this workstation is, which folder carries its messages, and how the
/// device is reached. Its window exists only while it is shown.
class frmDeviceConfig : public QObject
{
    Q_OBJECT

public:
    /// @param owner    the window that the dialog is modal over
    /// @param console  keeps the device settings; must outlive this object
    frmDeviceConfig(QWidget *owner, DeviceSettingsKeeper &console, const ModeSettings &settings,
                    FolderBrowsing folders);
    ~frmDeviceConfig() override;

    /// Shows the dialog and waits for its end.
    /// @return false if it was cancelled. A dialog that was left by its close box gives what the
    ///         last one with a pressed button gave; true if there was none.
    bool ShowForm();

private:
    void Form_Load();
    void connectControls();
    void LocalizeForm();
    void FillLists();
    void LoadSettings();
    void SaveSettings();
    void EnableDeviceFields(bool state);

    void opClient_Click();
    void opServer_Click();
    void btnOpen_Click();
    void cmdOk_Click();
    void cmdCancel_Click();

    QWidget *m_owner;
    DeviceSettingsKeeper &m_console;
    ModeSettings m_settings;
    FolderBrowsing m_folders;
    std::unique_ptr<DeviceConfigForm> m_form;

    bool mbCancelled = false; ///< kept from one showing to the next
};

} // namespace norvane
