#pragma once

#include <QObject>

class QAbstractButton;

namespace norvane {

/// A press gives a button the focus before it acts, however it comes: by an access key, by an
/// assistive technology or by click() as by the mouse. The field that had the focus until then does
/// first what is due when it is left: what was typed into it counts, its own handler runs.
///
/// To be installed as an event filter of the application; it holds for every button of every window
/// that a mouse press gives the focus to.
class PressFocus : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    static void giveFocusTo(QAbstractButton *button);
};

} // namespace norvane
