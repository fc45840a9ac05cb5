#include "NorvaneSMS/device/DeviceConfigFixture.h"

#include "foundation/Globals.h"
#include "foundation/ui/CaptionedFrame.h"
#include "foundation/ui/FormSetUp.h"
#include "foundation/ui/PictureButton.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <QScreen>
#include <QTest>
#include <QWindow>

namespace norvane {

using namespace Qt::StringLiterals;

class DeviceConfigWindow : public DeviceConfigFixture
{
protected:
    /// The names of the controls that Tab reaches, from the one that has the focus.
    static QStringList tabbed(DeviceConfigForm &form)
    {
        QStringList names;
        const QWidget *const first = form.focusWidget();
        do {
            names << form.focusWidget()->objectName();
            QTest::keyClick(form.focusWidget(), Qt::Key_Tab);
        } while (form.focusWidget() != first && names.size() < 20);
        return names;
    }
};

TEST_F(DeviceConfigWindow, tabGoesThroughTheControlsInTheirOrder)
{
    show([&](DeviceConfigForm &form) {
        // Of the two option buttons Tab stops at the one that is on.
        EXPECT_EQ(tabbed(form).join(u' '),
                  u"txtPINCode txtParameter cboConnectionMode cboProtocol cmdOk "
                  "cmdCancel txtQueueFolder btnOpen opServer"_s);
        press(form.cmdCancel);
    });
}

TEST_F(DeviceConfigWindow, onAClientTabLeavesTheDeviceFieldsOut)
{
    store("ServerMode", u"False"_s);
    show([&](DeviceConfigForm &form) {
        EXPECT_EQ(tabbed(form).join(u' '), u"cmdOk cmdCancel txtQueueFolder btnOpen opClient"_s);
        press(form.cmdCancel);
    });
}

TEST_F(DeviceConfigWindow, itsSizeIsFixedAndOnlyTheCloseBoxIsThere)
{
    show([&](DeviceConfigForm &form) {
        EXPECT_EQ(form.minimumSize(), form.maximumSize());
        EXPECT_TRUE(form.isModal());
        const Qt::WindowFlags flags = form.windowFlags();
        EXPECT_TRUE(flags.testFlag(Qt::WindowCloseButtonHint));
        EXPECT_FALSE(flags.testFlag(Qt::WindowMinimizeButtonHint));
        EXPECT_FALSE(flags.testFlag(Qt::WindowMaximizeButtonHint));
        press(form.cmdCancel);
    });
}

TEST_F(DeviceConfigWindow, itStandsInTheMiddleOfTheScreen)
{
    show([&](DeviceConfigForm &form) {
        const QRect screen = form.screen()->geometry();
        const QRect outer = form.windowHandle()->frameGeometry();
        ASSERT_NE(outer.size(), form.size()) << "this platform draws a frame";
        EXPECT_EQ(outer.topLeft(),
                  screen.topLeft() + FormSetUp::centred(outer.size(), screen.size()));
        press(form.cmdCancel);
    });
}

TEST_F(DeviceConfigWindow, textsHaveNoLimitAndThePinIsShownInClear)
{
    const QString endless(100'000, u'x');
    show([&](DeviceConfigForm &form) {
        EXPECT_EQ(form.txtPINCode->echoMode(), QLineEdit::Normal);
        for (QLineEdit *const box : {form.txtPINCode, form.txtParameter, form.txtQueueFolder}) {
            box->setText(endless);
            EXPECT_EQ(box->text().size(), endless.size());
        }
        press(form.cmdCancel);
    });
}

TEST_F(DeviceConfigWindow, everyCaptionFitsItsControlInEachLanguage)
{
    for (const char *const code : {"ESN", "CAT", "PTG"}) {
        goLocalize = std::make_unique<cls_Localize>();
        ASSERT_TRUE(goLocalize->Init(
            QStringLiteral(NORVANE_SOURCE_DIR "/resources/language/NorvaneSMS_%1.XML")
                .arg(QLatin1String(code)),
            QLatin1String(code)));
        show([&](DeviceConfigForm &form) {
            for (const QLabel *const label : form.findChildren<QLabel *>())
                EXPECT_LE(label->sizeHint().width(), label->width() - 2)
                    << code << ' ' << label->text().toStdString();
            for (const QRadioButton *const option : form.findChildren<QRadioButton *>())
                EXPECT_LE(option->sizeHint().width(), option->width()) << code;
            for (const QPushButton *const button : {form.cmdOk, form.cmdCancel})
                EXPECT_LE(button->fontMetrics().horizontalAdvance(button->text()) + 12,
                          button->width())
                    << code;
            for (const QComboBox *const list : form.findChildren<QComboBox *>())
                EXPECT_LE(list->sizeHint().width(), list->width()) << code;
            for (const QLineEdit *const box : form.findChildren<QLineEdit *>())
                EXPECT_GE(box->height(), box->fontMetrics().height() + 4) << code;
            press(form.cmdCancel);
        });
    }
}

TEST_F(DeviceConfigWindow, noControlLiesOverAnother)
{
    show([&](DeviceConfigForm &form) {
        const QList<QWidget *> controls =
            form.findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly);
        for (const QWidget *const one : controls) {
            EXPECT_TRUE(form.rect().contains(one->geometry())) << one->objectName().toStdString();
            for (const QWidget *const other : controls)
                EXPECT_TRUE(one == other || !one->geometry().intersects(other->geometry()))
                    << one->objectName().toStdString() << ' ' << other->objectName().toStdString();
        }
        press(form.cmdCancel);
    });
}

} // namespace norvane
