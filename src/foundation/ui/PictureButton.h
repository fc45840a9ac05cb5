#pragma once

#include <QPushButton>

namespace norvane {

/// A push button with its picture above its caption. A caption too wide for the button is broken
/// between words. Without a caption the picture stands in the middle. Return presses it as Space
/// does, in a window without a default button as well, and once however long it is held.
class PictureButton : public QPushButton
{
    Q_OBJECT

public:
    using QPushButton::QPushButton;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
};

} // namespace norvane
