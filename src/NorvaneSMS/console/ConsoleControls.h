#pragma once

#include <QHash>
#include <QSizeF>
#include <QString>

class QDateEdit;
class QLabel;
class QTableView;
class QTimeEdit;
class QWidget;

namespace norvane {

class CaptionedFrame;
class ImageControl;
class MessageEdit;
class PhoneEdit;
class PictureButton;
class QueueGrid;
class TerminalView;

namespace Twips {
struct Rect;
}

struct ConsoleLayout;

/// The controls of the console window, made from its design table. Each bears its own name as
/// objectName and belongs to its container. A control of the table that code has to reach is a
/// member here, by its name.
class ConsoleControls
{
    /// A control of the design by its name, as whatever kind of widget it is wanted as.
    class Named
    {
    public:
        Named(QWidget *control, const char *name) : m_control(control), m_name(name) {}
        template <typename Widget>
        operator Widget *() const;

    private:
        QWidget *m_control;
        const char *m_name;
    };
    Named named(const char *name) const { return {m_byName.value(QLatin1String(name)), name}; }

    QWidget *m_window;
    QHash<QString, QWidget *> m_byName;

public:
    /// Makes all controls in `window`, at their design places and in their tab order.
    explicit ConsoleControls(QWidget *window);

    /// Horizontal and vertical twips of a pixel on the window's screen.
    QSizeF twipsPerPixel() const;
    /// Moves `control` to `place`, in twips of its container.
    void place(QWidget *control, const Twips::Rect &place) const;
    /// Places the movable controls in a window of this inner size, in twips.
    void place(const ConsoleLayout &layout, float width, float height) const;
    /// Gives the columns of both grids their widths.
    void setColumnWidths() const;
    /// Enables or disables what a server alone makes use of.
    void setServerEnabled(bool enabled) const;

    /// Sets caption or text of the control `name`.
    void setCaption(const QString &name, const QString &text) const;
    /// Sets what screen readers call the control `name`; a button without a caption shows it as its
    /// tooltip.
    void setAccessibleName(const QString &name, const QString &text) const;

    QWidget *picTopPanel = named("picTopPanel");
    QWidget *picMiddlePanel = named("picMiddlePanel");
    QWidget *picBottomPanel = named("picBottomPanel");
    QWidget *picLateralPanel = named("picLateralPanel");

    CaptionedFrame *fraSMSMessage = named("fraSMSMessage");
    CaptionedFrame *fraCommunication = named("fraCommunication");
    CaptionedFrame *fraEngineStatus = named("fraEngineStatus");
    CaptionedFrame *fraQueueStatus = named("fraQueueStatus");
    CaptionedFrame *fraDeviceStatus = named("fraDeviceStatus");
    CaptionedFrame *fraQueueDetails = named("fraQueueDetails");
    CaptionedFrame *fraSentDetails = named("fraSentDetails");

    PictureButton *btnDeviceConfig = named("btnDeviceConfig");
    PictureButton *btnTestDevice = named("btnTestDevice");
    PictureButton *btnSend = named("btnSend");
    PictureButton *btnImport = named("btnImport");
    PictureButton *btnStart = named("btnStart");
    PictureButton *btnStop = named("btnStop");
    PictureButton *btnClearQueue = named("btnClearQueue");

    MessageEdit *txtMessage = named("txtMessage");
    PhoneEdit *txtPhone = named("txtPhone");
    QDateEdit *dtDeliveryDate = named("dtDeliveryDate");
    QTimeEdit *tmDeliveryDate = named("tmDeliveryDate");
    TerminalView *txtTerm = named("txtTerm");
    QueueGrid *grdQueue = named("grdQueue");
    QTableView *grdSentDetails = named("grdSentDetails");

    QLabel *lblSMSChars = named("lblSMSChars");
    QLabel *lblPhone = named("lblPhone");
    QLabel *lblDeliveryDate = named("lblDeliveryDate");
    QLabel *lblEngineStatus = named("lblEngineStatus");
    QLabel *lblQueueSize = named("lblQueueSize");
    QLabel *lblEstimated = named("lblEstimated");
    QLabel *lblDeviceInfo = named("lblDeviceInfo");
    QLabel *lblDeviceStatus = named("lblDeviceStatus");

    ImageControl *imgLogo[2] = {named("imgLogo(0)"), named("imgLogo(1)")};
    ImageControl *imgEngineStatus[2] = {named("imgEngineStatus(0)"), named("imgEngineStatus(1)")};
    ImageControl *imgQueue[3] = {named("imgQueue(0)"), named("imgQueue(1)"), named("imgQueue(2)")};

private:
    QHash<QString, QWidget *> makeAll() const;
    void setTabOrder() const;
    void setColours() const;
};

} // namespace norvane
