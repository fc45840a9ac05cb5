#pragma once

#include <QApplication>

/// The application object of the console. Every handler (of clicks, timers, engine events and
/// sockets) runs below notify(), so a failure that none of them catches ends there, in the fatal
/// report, and never crosses the event loop.
class Application : public QApplication
{
    Q_OBJECT

public:
    using QApplication::QApplication;

    bool notify(QObject *receiver, QEvent *event) override;
};
