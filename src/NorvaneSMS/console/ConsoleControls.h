#pragma once

#include <QHash>
#include <QSizeF>
#include <QString>

class CaptionedFrame;
class ImageControl;
class MessageEdit;
class PhoneEdit;
class PictureButton;
class QueueGrid;
class TerminalView;
class QDateEdit;
class QLabel;
class QTableView;
class QTimeEdit;
class QWidget;

namespace Twips {
struct Rect;
}

struct ConsoleLayout;

/// The controls of the console window, made from its design table. Each bears its own name as
/// objectName and belongs to its container.
class ConsoleControls
{
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

    QWidget *picTopPanel = nullptr;
    QWidget *picMiddlePanel = nullptr;
    QWidget *picBottomPanel = nullptr;
    QWidget *picLateralPanel = nullptr;

    CaptionedFrame *fraSMSMessage = nullptr;
    CaptionedFrame *fraCommunication = nullptr;
    CaptionedFrame *fraEngineStatus = nullptr;
    CaptionedFrame *fraQueueStatus = nullptr;
    CaptionedFrame *fraDeviceStatus = nullptr;
    CaptionedFrame *fraQueueDetails = nullptr;
    CaptionedFrame *fraSentDetails = nullptr;

    PictureButton *btnDeviceConfig = nullptr;
    PictureButton *btnTestDevice = nullptr;
    PictureButton *btnSend = nullptr;
    PictureButton *btnImport = nullptr;
    PictureButton *btnStart = nullptr;
    PictureButton *btnStop = nullptr;
    PictureButton *btnClearQueue = nullptr;

    MessageEdit *txtMessage = nullptr;
    PhoneEdit *txtPhone = nullptr;
    QDateEdit *dtDeliveryDate = nullptr;
    QTimeEdit *tmDeliveryDate = nullptr;
    TerminalView *txtTerm = nullptr;
    QueueGrid *grdQueue = nullptr;
    QTableView *grdSentDetails = nullptr;

    QLabel *lblSMSChars = nullptr;
    QLabel *lblPhone = nullptr;
    QLabel *lblDeliveryDate = nullptr;
    QLabel *lblEngineStatus = nullptr;
    QLabel *lblQueueSize = nullptr;
    QLabel *lblEstimated = nullptr;
    QLabel *lblDeviceInfo = nullptr;
    QLabel *lblDeviceStatus = nullptr;

    ImageControl *imgLogo[2] = {};
    ImageControl *imgEngineStatus[2] = {};
    ImageControl *imgQueue[3] = {};

private:
    void makeAll();
    void bindMembers();
    void setTabOrder() const;
    void setColours() const;
    template <typename Widget>
    void bind(Widget *&member, const char *name) const;

    QWidget *m_window;
    QHash<QString, QWidget *> m_byName;
};
