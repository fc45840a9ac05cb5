#pragma once

#include <QDialog>

class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace norvane {

class CaptionedFrame;
class ImageControl;
class PictureButton;

namespace Twips {
struct Rect;
}

/// The window of the device dialog with its controls, at their design places and in their tab
/// order. Each bears its own name as objectName.
///
/// Escape presses cmdCancel. The close box hides the window and does nothing else.
class DeviceConfigForm : public QDialog
{
    Q_OBJECT

public:
    explicit DeviceConfigForm(QWidget *owner);

    QLineEdit *txtPINCode = nullptr;
    QLineEdit *txtParameter = nullptr;
    QComboBox *cboConnectionMode = nullptr;
    QComboBox *cboProtocol = nullptr;
    QPushButton *cmdOk = nullptr;
    QPushButton *cmdCancel = nullptr;
    QComboBox *cboDeviceType = nullptr;
    QLineEdit *txtQueueFolder = nullptr;
    PictureButton *btnOpen = nullptr;
    QRadioButton *opClient = nullptr;
    QRadioButton *opServer = nullptr;
    CaptionedFrame *fraOperationMode = nullptr;
    ImageControl *imgDevice = nullptr;

    QLabel *lblPINCode = nullptr;
    QLabel *lblParameter = nullptr;
    QLabel *lblMode = nullptr;
    QLabel *lblProtocol = nullptr;
    QLabel *lblDeviceType = nullptr;
    QLabel *Label1 = nullptr;

    void reject() override;
    /// Gives the focus to the first control that can have it.
    void focusFirst();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void makeMode();
    void makeFields();
    void makeButtons();
    void setTabOrders();
    QList<QWidget *> inTabOrder() const;
    template <typename Control>
    Control *add(const char *name, const Twips::Rect &place, QWidget *container = nullptr);
    QLineEdit *addTextBox(const char *name, const Twips::Rect &place);
    QLabel *addLabel(const char *name, const QString &text, QWidget *field);
};

} // namespace norvane
