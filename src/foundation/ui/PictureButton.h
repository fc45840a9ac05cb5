#pragma once

#include <QPushButton>

/// A push button with its picture above its caption. A caption too wide for the button is broken
/// between words. Without a caption the picture stands in the middle.
class PictureButton : public QPushButton
{
    Q_OBJECT

public:
    using QPushButton::QPushButton;

protected:
    void paintEvent(QPaintEvent *event) override;
};
