#pragma once

#include "service/dispatch/Clock.h"

#include <QObject>
#include <QTimer>

#include <memory>

class Dispatcher;
class EngineService;
class FileLock;
class Modem;
class Store;
class StoredPinGate;

/// The engine as it runs: the one of its user, on the session bus.
class EngineHost : public QObject
{
    Q_OBJECT

public:
    enum class Start {
        Running,
        AlreadyThere, ///< another engine of this user has the store
        Failed,
    };

    explicit EngineHost(QObject *parent = nullptr);
    ~EngineHost() override;

    /// Brings the engine up.
    Start start();

    /// Finishes the part in progress, within twenty seconds, and ends the program.
    void end();

private:
    bool lockStore(const QString &folder);
    void makeParts(const QString &storeFile);
    bool enterBus();

private Q_SLOTS:
    void busLost();

private:
    std::unique_ptr<FileLock> m_lock;
    SystemClock m_clock;
    std::unique_ptr<Store> m_store;
    std::unique_ptr<StoredPinGate> m_pinGate;
    std::unique_ptr<Modem> m_modem;
    std::unique_ptr<Dispatcher> m_dispatcher;
    std::unique_ptr<EngineService> m_service;
    QTimer m_endLimit;
};
