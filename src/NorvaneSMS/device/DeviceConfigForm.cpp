#include "NorvaneSMS/device/DeviceConfigForm.h"

#include "foundation/ui/CaptionedFrame.h"
#include "foundation/ui/FormSetUp.h"
#include "foundation/ui/ImageControl.h"
#include "foundation/ui/PictureButton.h"
#include "foundation/ui/SvgPicture.h"
#include "foundation/ui/Twips.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>

#include <limits>

namespace {

// Twips of the window's inside.
constexpr Twips::Rect formPlace{0, 0, 5850, 4305};
constexpr float labelLeft = 150;
constexpr float fieldLeft = 1530;
constexpr float fieldWidth = 4170;
constexpr float fieldHeight = 330;
constexpr int openPicture = 16; // pixels

constexpr Twips::Rect fieldAt(float top, float width = fieldWidth)
{
    return {fieldLeft, top, width, fieldHeight};
}

} // namespace

DeviceConfigForm::DeviceConfigForm(QWidget *owner)
    : QDialog(owner, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                         Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint)
{
    setObjectName(QStringLiteral("frmDeviceConfig"));
    setWindowTitle(QStringLiteral("SMS - Configurações"));
    setFixedSize(Twips::toPixels(formPlace, twipsPerPixel(this)).size());
    makeMode();
    makeFields();
    makeButtons();
    setTabOrders();
}

template <typename Control>
Control *DeviceConfigForm::add(const char *name, const Twips::Rect &place, QWidget *container)
{
    auto *const control = new Control(container ? container : this);
    control->setObjectName(QLatin1String(name));
    control->setGeometry(Twips::toPixels(place, twipsPerPixel(this)));
    return control;
}

QLineEdit *DeviceConfigForm::addTextBox(const char *name, const Twips::Rect &place)
{
    auto *const box = add<QLineEdit>(name, place);
    box->setMaxLength(std::numeric_limits<int>::max());
    return box;
}

QLabel *DeviceConfigForm::addLabel(const char *name, const QString &text, QWidget *field)
{
    auto *const label = add<QLabel>(name, {});
    label->setTextFormat(Qt::PlainText);
    label->setText(text);
    label->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    label->setBuddy(field);
    // Beside its field, and as high, so that both texts stand on one line.
    const int left = Twips::toPixels({labelLeft, 0, 0, 0}, twipsPerPixel(this)).left();
    label->setGeometry(left, field->y(), field->x() - left, field->height());
    return label;
}

void DeviceConfigForm::makeMode()
{
    fraOperationMode = add<CaptionedFrame>("fraOperationMode", {labelLeft, 105, 4500, 735});
    fraOperationMode->setCaption(QStringLiteral("Modo de funcionamento"));
    opServer = add<QRadioButton>("opServer", {240, 300, 1230, 330}, fraOperationMode);
    opServer->setText(QStringLiteral("Servidor"));
    opClient = add<QRadioButton>("opClient", {2250, 300, 1230, 330}, fraOperationMode);
    opClient->setText(QStringLiteral("Cliente"));

    // Of the two, Tab stops at the one that is on.
    for (QRadioButton *const option : {opClient, opServer}) {
        option->setFocusPolicy(Qt::ClickFocus);
        connect(option, &QRadioButton::toggled, option, [option](bool on) {
            option->setFocusPolicy(on ? Qt::StrongFocus : Qt::ClickFocus);
        });
    }

    imgDevice = new ImageControl(QStringLiteral(":/images/device.svg"), this);
    imgDevice->setObjectName(QStringLiteral("imgDevice"));
    imgDevice->setGeometry(Twips::toPixels({4860, 165, 720, 720}, twipsPerPixel(this)));
}

void DeviceConfigForm::makeFields()
{
    txtQueueFolder = addTextBox("txtQueueFolder", fieldAt(1005, 3675));
    Label1 = addLabel("Label1", QStringLiteral("Pasta envio:"), txtQueueFolder);
    btnOpen = add<PictureButton>("btnOpen", {5250, 1005, 450, fieldHeight});
    const QSize size(openPicture, openPicture);
    btnOpen->setIcon(SvgPicture::icon(QStringLiteral(":/images/button-open-folder.svg"), size));
    btnOpen->setIconSize(size);

    cboDeviceType = add<QComboBox>("cboDeviceType", fieldAt(1515));
    lblDeviceType = addLabel("lblDeviceType", QStringLiteral("Dispositivo:"), cboDeviceType);
    cboConnectionMode = add<QComboBox>("cboConnectionMode", fieldAt(1950));
    lblMode = addLabel("lblMode", QStringLiteral("Modo:"), cboConnectionMode);
    cboProtocol = add<QComboBox>("cboProtocol", fieldAt(2385));
    lblProtocol = addLabel("lblProtocol", QStringLiteral("Protocolo:"), cboProtocol);
    txtParameter = addTextBox("txtParameter", fieldAt(2820));
    lblParameter = addLabel("lblParameter", QStringLiteral("Parâmetros:"), txtParameter);
    txtPINCode = addTextBox("txtPINCode", fieldAt(3255));
    lblPINCode = addLabel("lblPINCode", QStringLiteral("PIN Code:"), txtPINCode);
}

void DeviceConfigForm::makeButtons()
{
    cmdOk = add<QPushButton>("cmdOk", {3240, 3765, 1185, 390});
    cmdOk->setText(QStringLiteral("Ok"));
    cmdOk->setDefault(true);
    cmdCancel = add<QPushButton>("cmdCancel", {4515, 3765, 1185, 390});
    cmdCancel->setText(QStringLiteral("Cancelar"));
}

QList<QWidget *> DeviceConfigForm::inTabOrder() const
{
    return {txtPINCode,    txtParameter,   cboConnectionMode, cboProtocol, cmdOk,   cmdCancel,
            cboDeviceType, txtQueueFolder, btnOpen,           opClient,    opServer};
}

void DeviceConfigForm::setTabOrders()
{
    const QList<QWidget *> order = inTabOrder();
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order.at(i - 1), order.at(i));
}

void DeviceConfigForm::focusFirst()
{
    for (QWidget *const control : inTabOrder()) {
        if (control->isEnabled()) {
            control->setFocus();
            return;
        }
    }
}

void DeviceConfigForm::reject()
{
    cmdCancel->click();
}

void DeviceConfigForm::closeEvent(QCloseEvent *event)
{
    hide();
    event->accept();
}
