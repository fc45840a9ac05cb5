#include "NorvaneSMS/console/frmSMSClient.h"

#include "NorvaneSMS/app/mode/ModeWindow.h"
#include "NorvaneSMS/console/ConsoleDesign.h"
#include "NorvaneSMS/console/MessageEdit.h"
#include "NorvaneSMS/console/PhoneEdit.h"
#include "NorvaneSMS/console/QueueGrid.h"
#include "NorvaneSMS/console/QueueGridModel.h"
#include "NorvaneSMS/console/SentGridModel.h"
#include "NorvaneSMS/console/TerminalView.h"
#include "NorvaneSMS/device/frmDeviceConfig.h"
#include "NorvaneSMS/engine/Estimate.h"
#include "NorvaneSMS/import/frmImport.h"
#include "foundation/Globals.h"
#include "foundation/ui/CaptionedFrame.h"
#include "foundation/ui/FatalReport.h"
#include "foundation/ui/FormSetUp.h"
#include "foundation/ui/ImageControl.h"
#include "foundation/ui/PictureButton.h"
#include "foundation/ui/WindowHook.h"
#include "foundation/ui/WindowPlace.h"

#include <QCloseEvent>
#include <QDateEdit>
#include <QLabel>
#include <QScreen>
#include <QTableView>

#include <cmath>
#include <utility>

frmSMSClient::frmSMSClient(ConsoleEnvironment environment)
    : m_environment(std::move(environment)), m_ui(this),
      m_queueRows(new QueueGridModel(m_environment.locale, this)),
      m_sentRows(new SentGridModel(this)),
      m_deviceConfig(std::make_unique<frmDeviceConfig>(this, *this, m_environment.settings,
                                                       m_environment.folders)),
      mdLastEvent(Estimate::zeroDate())
{
    setObjectName(QStringLiteral("frmSMSClient"));
    setWindowTitle(ConsoleDesign::designTitle);
    m_ui.grdQueue->setModel(m_queueRows);
    m_ui.grdSentDetails->setModel(m_sentRows);
    connectControls();
}

frmSMSClient::~frmSMSClient() = default;

void frmSMSClient::connectControls()
{
    using FatalReport::guarded;
    connect(m_ui.txtMessage, &MessageEdit::changed, this,
            guarded(this, &frmSMSClient::txtMessage_Change));
    connect(m_ui.btnSend, &QPushButton::clicked, this, guarded(this, &frmSMSClient::btnSend_Click));
    connect(m_ui.btnImport, &QPushButton::clicked, this,
            guarded(this, &frmSMSClient::btnImport_Click));
    connect(m_ui.btnStart, &QPushButton::clicked, this,
            guarded(this, &frmSMSClient::btnStart_Click));
    connect(m_ui.btnStop, &QPushButton::clicked, this, guarded(this, &frmSMSClient::btnStop_Click));
    connect(m_ui.btnClearQueue, &QPushButton::clicked, this,
            guarded(this, &frmSMSClient::btnClearQueue_Click));
    connectQueueGrid();
    connectDeviceButtons();
}

void frmSMSClient::Form_Load()
{
    m_ui.imgLogo[0]->hide();
    m_ui.imgLogo[1]->show();
    moFileSystem = std::make_unique<FileSystem>();
    mbServerMode = m_environment.settings.serverMode();
    LocalizeForm();
    SetGridHeaders();
    ApplyOperationMode();
    SetWindowLimits();
    CenterForm(this);
    RefreshEngineState();
    m_hook = std::make_unique<WindowHook>(this, gWindowLimits);
}

void frmSMSClient::LocalizeForm()
{
    SetWindowTitle();
    for (const ConsoleDesign::Caption &caption : ConsoleDesign::captions())
        m_ui.setCaption(caption.control, GS(caption.textId));
    for (const ConsoleDesign::Caption &name : ConsoleDesign::names())
        m_ui.setAccessibleName(name.control, GS(name.textId));
    m_sentRows->setFailedWord(GS(3760109));
}

void frmSMSClient::SetWindowTitle()
{
    setWindowTitle(GS(ConsoleDesign::windowTitle));
}

void frmSMSClient::SetGridHeaders()
{
    m_queueRows->setHeaders({GS(3760028), GS(3760029), GS(3760030)});
    m_sentRows->setHeaders({GS(3760031), GS(3760029), GS(3760030)});
    const qreal twipsPerPixel = m_ui.twipsPerPixel().width();
    for (QTableView *const grid :
         std::initializer_list<QTableView *>{m_ui.grdQueue, m_ui.grdSentDetails}) {
        int column = 0;
        for (const float width : ConsoleDesign::columnWidths)
            grid->setColumnWidth(column++, static_cast<int>(std::lround(width / twipsPerPixel)));
    }
}

void frmSMSClient::ApplyOperationMode()
{
    msQueueFolder = m_environment.settings.queueFolder();
    mbServerMode = m_environment.settings.serverMode();
    if (mbServerMode) {
        moSMSManager = m_environment.createEngine();
        connectEngine();
        startPooling();
    } else {
        if (moSMSManager) {
            moSMSManager->StopEngine();
            moSMSManager.reset();
        }
        releasePooling();
    }
    enableByMode();
}

void frmSMSClient::enableByMode()
{
    // Each control has an enabled flag of its own, whatever its frame's is, and one of the two
    // status pictures is left out.
    for (CaptionedFrame *const frame :
         {m_ui.fraCommunication, m_ui.fraDeviceStatus, m_ui.fraEngineStatus, m_ui.fraQueueDetails,
          m_ui.fraQueueStatus, m_ui.fraSentDetails})
        frame->setFrameEnabled(mbServerMode);

    const std::initializer_list<QWidget *> controls = {
        m_ui.btnTestDevice, m_ui.btnClearQueue,  m_ui.btnStart,           m_ui.btnStop,
        m_ui.grdQueue,      m_ui.grdSentDetails, m_ui.imgEngineStatus[0], m_ui.imgQueue[0],
        m_ui.imgQueue[1],   m_ui.lblDeviceInfo,  m_ui.lblDeviceStatus,    m_ui.lblEngineStatus,
        m_ui.lblEstimated,  m_ui.lblQueueSize};
    for (QWidget *const control : controls)
        control->setEnabled(mbServerMode);
}

void frmSMSClient::SetWindowLimits()
{
    const QSizeF twipsPerPixel = m_ui.twipsPerPixel();
    const QSize screen = this->screen()->size();
    const QSize screenTwips(qRound(screen.width() * twipsPerPixel.width()),
                            qRound(screen.height() * twipsPerPixel.height()));
    gWindowLimits = ModeWindow::limits(mbServerMode, screenTwips, twipsPerPixel);

    const QSize outerPixels = ModeWindow::outerPixels(mbServerMode, twipsPerPixel);
    setWindowState(windowState() &
                   ~(Qt::WindowMinimized | Qt::WindowMaximized | Qt::WindowFullScreen));
    if (m_hook)
        m_hook->setLimits(gWindowLimits, outerPixels);
    else
        WindowPlace::of(this).setOuterSize(outerPixels);
    CenterForm(this);
}

void frmSMSClient::RefreshEngineState()
{
    if (moSMSManager) {
        ShowQueueSize(moSMSManager->GetQueueSize());
        ShowEngineStatus(moSMSManager->GetEngineStatus());
    }
    const QDateTime now = m_environment.now();
    m_ui.dtDeliveryDate->setDate(now.date());
    m_ui.tmDeliveryDate->setTime(now.time());
}

void frmSMSClient::resizeEvent(QResizeEvent *)
{
    Form_Resize();
}

void frmSMSClient::Form_Resize()
{
    const QSizeF twipsPerPixel = m_ui.twipsPerPixel();
    const auto inner = QSizeF(width() * twipsPerPixel.width(), height() * twipsPerPixel.height());
    const auto innerWidth = static_cast<float>(inner.width());
    const auto innerHeight = static_cast<float>(inner.height());

    m_ui.place(m_ui.picTopPanel, {0, 0, innerWidth, m_layout.topPanelHeight});
    m_ui.place(m_ui.picBottomPanel, {0, innerHeight - m_layout.bottomPanelHeight, innerWidth,
                                     m_layout.bottomPanelHeight});

    resizeConsole(m_layout, innerWidth, innerHeight);
    m_ui.place(m_ui.picMiddlePanel, m_layout.picMiddlePanel);
    m_ui.place(m_ui.fraCommunication, m_layout.fraCommunication);
    m_ui.place(m_ui.picLateralPanel, m_layout.picLateralPanel);
    m_ui.place(m_ui.txtTerm, m_layout.txtTerm);
    m_ui.place(m_ui.fraSentDetails, m_layout.fraSentDetails);
    m_ui.place(m_ui.fraQueueDetails, m_layout.fraQueueDetails);
    m_ui.place(m_ui.grdQueue, m_layout.grdQueue);
    m_ui.place(m_ui.grdSentDetails, m_layout.grdSentDetails);
    m_ui.place(m_ui.btnClearQueue, m_layout.btnClearQueue);
    m_ui.place(m_ui.btnStop, m_layout.btnStop);
    m_ui.place(m_ui.btnStart, m_layout.btnStart);
}

void frmSMSClient::closeEvent(QCloseEvent *event)
{
    if (!std::exchange(m_unloaded, true))
        Form_Unload();
    event->accept();
}

void frmSMSClient::Form_Unload()
{
    moFileSystem.reset();
    moSMSManager.reset();
    releasePooling();
    m_hook.reset();
    m_environment.releaseGlobals();
}
