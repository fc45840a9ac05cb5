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

namespace norvane {

using namespace Qt::StringLiterals;

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
    setObjectName(u"frmDeviceConfig"_s);
    setWindowTitle(u"SMS - Configurações"_s);
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
    fraOperationMode->setCaption(u"Modo de funcionamento"_s);
    opServer = add<QRadioButton>("opServer", {240, 300, 1230, 330}, fraOperationMode);
    opServer->setText(u"Servidor"_s);
    opClient = add<QRadioButton>("opClient", {2250, 300, 1230, 330}, fraOperationMode);
    opClient->setText(u"Cliente"_s);

    // Of the two, Tab stops at the one that is on.
    for (QRadioButton *const option : {opClient, opServer}) {
        option->setFocusPolicy(Qt::ClickFocus);
        connect(option, &QRadioButton::toggled, option, [option](bool on) {
            option->setFocusPolicy(on ? Qt::StrongFocus : Qt::ClickFocus);
        });
    }

    imgDevice = new ImageControl(u":/images/device.svg"_s, this);
    imgDevice->setObjectName(u"imgDevice"_s);
    imgDevice->setGeometry(Twips::toPixels({4860, 165, 720, 720}, twipsPerPixel(this)));
}

void DeviceConfigForm::makeFields()
{
    txtQueueFolder = addTextBox("txtQueueFolder", fieldAt(1005, 3675));
    Label1 = addLabel("Label1", u"Pasta envio:"_s, txtQueueFolder);
    btnOpen = add<PictureButton>("btnOpen", {5250, 1005, 450, fieldHeight});
    const QSize size(openPicture, openPicture);
    btnOpen->setIcon(SvgPicture::icon(u":/images/button-open-folder.svg"_s, size));
    btnOpen->setIconSize(size);

    cboDeviceType = add<QComboBox>("cboDeviceType", fieldAt(1515));
    lblDeviceType = addLabel("lblDeviceType", u"Dispositivo:"_s, cboDeviceType);
    cboConnectionMode = add<QComboBox>("cboConnectionMode", fieldAt(1950));
    lblMode = addLabel("lblMode", u"Modo:"_s, cboConnectionMode);
    cboProtocol = add<QComboBox>("cboProtocol", fieldAt(2385));
    lblProtocol = addLabel("lblProtocol", u"Protocolo:"_s, cboProtocol);
    txtParameter = addTextBox("txtParameter", fieldAt(2820));
    lblParameter = addLabel("lblParameter", u"Parâmetros:"_s, txtParameter);
    txtPINCode = addTextBox("txtPINCode", fieldAt(3255));
    lblPINCode = addLabel("lblPINCode", u"PIN Code:"_s, txtPINCode);
}

void DeviceConfigForm::makeButtons()
{
    cmdOk = add<QPushButton>("cmdOk", {3240, 3765, 1185, 390});
    cmdOk->setText(u"Ok"_s);
    cmdOk->setDefault(true);
    cmdCancel = add<QPushButton>("cmdCancel", {4515, 3765, 1185, 390});
    cmdCancel->setText(u"Cancelar"_s);
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

} // namespace norvane
