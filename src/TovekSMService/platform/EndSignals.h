#pragma once

#include <QObject>
#include <QSocketNotifier>

#include <memory>

namespace norvane {

/// The platform's request that a program end (SIGTERM, SIGINT, SIGHUP), as a signal of the event loop.
class EndSignals : public QObject
{
    Q_OBJECT

public:
    explicit EndSignals(QObject *parent = nullptr);
    ~EndSignals() override;

Q_SIGNALS:
    void endWanted();

private:
    void read();

    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace norvane
