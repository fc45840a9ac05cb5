#include "NorvaneSMS/look/WindowsFixture.h"

#include <QAbstractButton>
#include <QApplication>

namespace norvane {

namespace {

using ButtonFocus = WindowsFixture;

TEST_F(ButtonFocus, everyButtonOfEveryWindowHasTheFocusWhenItIsPressed)
{
    int pressed = 0;
    inEveryWindow([&](QWidget &window) {
        QApplication::setActiveWindow(&window);
        for (auto *const button : window.findChildren<QAbstractButton *>()) {
            if (!button->isEnabled() || button->window() != &window ||
                button->objectName().isEmpty()) // a grid's own corner
                continue;
            if (QWidget *const former = QApplication::focusWidget())
                former->clearFocus();
            Q_EMIT button->pressed();
            EXPECT_TRUE(button->hasFocus()) << qPrintable(button->objectName());
            ++pressed;
        }
    });
    EXPECT_GE(pressed, 14) << "6 of the console, 5 of the device dialog, 3 of the import dialog";
}

} // namespace

} // namespace norvane
