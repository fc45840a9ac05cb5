#include "NorvaneSMS/device/frmDeviceConfig.h"

#include "NorvaneSMS/device/DeviceConfigForm.h"
#include "NorvaneSMS/device/DeviceSettingsKeeper.h"
#include "NorvaneSMS/device/FolderPicker.h"
#include "foundation/FileSystem.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"
#include "foundation/PlatformHelpers.h"
#include "foundation/TextId.h"
#include "foundation/ui/FatalReport.h"
#include "foundation/ui/FormSetUp.h"
#include "foundation/ui/ImageControl.h"
#include "foundation/ui/PictureButton.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>

#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The settings count list positions from 1; 0 stands for none.
constexpr int offset = 1;

int positionOf(qint32 setting)
{
    return setting < offset ? -1 : setting - offset;
}

QString proposedParameter()
{
    return u"COM1, 9600"_s;
}

} // namespace

frmDeviceConfig::frmDeviceConfig(QWidget *owner, DeviceSettingsKeeper &console,
                                 const ModeSettings &settings, FolderBrowsing folders)
    : m_owner(owner), m_console(console), m_settings(settings), m_folders(std::move(folders))
{}

frmDeviceConfig::~frmDeviceConfig() = default;

bool frmDeviceConfig::ShowForm()
{
    if (!m_form)
        Form_Load();
    m_form->exec();
    m_form.reset();
    return !mbCancelled;
}

void frmDeviceConfig::Form_Load()
{
    m_form = std::make_unique<DeviceConfigForm>(m_owner);
    connectControls();
    CenterForm(m_form.get());
    LocalizeForm();
    FillLists();
    LoadSettings();
    m_form->focusFirst();
}

void frmDeviceConfig::connectControls()
{
    using FatalReport::guarded;
    const auto onClick = [this](QAbstractButton *button, void (frmDeviceConfig::*handler)()) {
        connect(button, &QAbstractButton::clicked, this, guarded(this, handler));
    };
    onClick(m_form->opClient, &frmDeviceConfig::opClient_Click);
    onClick(m_form->opServer, &frmDeviceConfig::opServer_Click);
    onClick(m_form->btnOpen, &frmDeviceConfig::btnOpen_Click);
    onClick(m_form->cmdOk, &frmDeviceConfig::cmdOk_Click);
    onClick(m_form->cmdCancel, &frmDeviceConfig::cmdCancel_Click);
}

void frmDeviceConfig::LocalizeForm()
{
    m_form->setWindowTitle(GS(TextId::DeviceDialogTitle));
    m_form->lblDeviceType->setText(GS(TextId::DeviceTypeLabel));
    m_form->lblMode->setText(GS(TextId::ModeLabel));
    m_form->lblProtocol->setText(GS(TextId::ProtocolLabel));
    m_form->lblParameter->setText(GS(TextId::ParameterLabel));
    m_form->lblPINCode->setText(GS(TextId::PinLabel));
    m_form->cmdOk->setText(GS(TextId::OkButton));
    m_form->cmdCancel->setText(GS(TextId::CancelButton));
    m_form->btnOpen->setAccessibleName(GS(TextId::ChooseFolderTip));
    m_form->btnOpen->setToolTip(GS(TextId::ChooseFolderTip));
    m_form->imgDevice->setAccessibleName(GS(TextId::DeviceName));
}

void frmDeviceConfig::FillLists()
{
    m_form->cboDeviceType->clear();
    m_form->cboDeviceType->addItem(GS(TextId::GsmDeviceType));
    m_form->cboDeviceType->setCurrentIndex(0);
    m_form->cboDeviceType->setEnabled(false);

    m_form->cboConnectionMode->clear();
    m_form->cboConnectionMode->addItems(
        {u"Physical/Virtual Serial port"_s, u"Infrared"_s, u"Bluetooth"_s});
    m_form->cboConnectionMode->setCurrentIndex(-1);

    m_form->cboProtocol->clear();
    m_form->cboProtocol->addItems({u"AT Command"_s, u"Nokia FBus"_s, u"Nokia MBus"_s});
    m_form->cboProtocol->setCurrentIndex(-1);
}

void frmDeviceConfig::LoadSettings()
{
    // A press of either button runs its handler, which proposes device settings or disables them.
    if (m_settings.serverMode())
        opServer_Click();
    else
        opClient_Click();
    m_form->txtQueueFolder->setText(m_settings.queueFolder());

    const DeviceSettings settings = m_console.GetDeviceSettings();
    m_form->cboDeviceType->setCurrentIndex(0);
    m_form->txtPINCode->setText(settings.PINCode);
    m_form->cboConnectionMode->setCurrentIndex(positionOf(settings.ConnectionMode));
    m_form->cboProtocol->setCurrentIndex(positionOf(settings.Protocol));
    m_form->txtParameter->setText(settings.Parameter);
}

void frmDeviceConfig::EnableDeviceFields(bool state)
{
    m_form->cboConnectionMode->setEnabled(state);
    m_form->cboProtocol->setEnabled(state);
    m_form->txtParameter->setEnabled(state);
    m_form->txtPINCode->setEnabled(state);
}

void frmDeviceConfig::opClient_Click()
{
    m_form->opServer->setChecked(false);
    m_form->opClient->setChecked(true);
    EnableDeviceFields(false);
}

void frmDeviceConfig::opServer_Click()
{
    m_form->opServer->setChecked(true);
    m_form->opClient->setChecked(false);
    EnableDeviceFields(true);
    m_form->cboDeviceType->setCurrentIndex(0);
    m_form->cboConnectionMode->setCurrentIndex(0);
    m_form->cboProtocol->setCurrentIndex(0);
    m_form->txtParameter->setText(proposedParameter());
    m_form->txtPINCode->clear();
}

void frmDeviceConfig::btnOpen_Click()
{
    QString path = m_folders.GetDocumentsFolder();
    if (!CD_ShowFolder(*m_folders.dialog, m_form.get(), u"Localização da pasta de envio de SMS"_s,
                       path, FolderBrowser::Style::Plain)) {
        m_form->txtQueueFolder->clear();
        return;
    }
    QString shown = path;
    if (!StripNulls(shown).isEmpty())
        m_form->txtQueueFolder->setText(path);
}

void frmDeviceConfig::cmdOk_Click()
{
    if (!FileSystem().FolderExists(m_form->txtQueueFolder->text())) {
        messageBoxes().show(GS(TextId::FolderNotAccessible), MessageBoxes::Icon::Exclamation,
                            MessageBoxes::Buttons::Ok, u"Norvane SMS"_s);
        m_form->txtQueueFolder->setFocus();
        return;
    }
    mbCancelled = false;
    SaveSettings();
    m_form->hide();
}

void frmDeviceConfig::SaveSettings()
{
    m_settings.saveServerMode(m_form->opServer->isChecked());
    m_settings.saveQueueFolder(m_form->txtQueueFolder->text());
    const DeviceSettings settings{m_form->cboDeviceType->currentIndex(), m_form->txtPINCode->text(),
                                  m_form->cboConnectionMode->currentIndex() + offset,
                                  m_form->cboProtocol->currentIndex() + offset,
                                  m_form->txtParameter->text()};
    m_console.SetDeviceSettings(settings);
}

void frmDeviceConfig::cmdCancel_Click()
{
    mbCancelled = true;
    m_form->hide();
}

} // namespace norvane
