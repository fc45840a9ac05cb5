#pragma once

#include "TovekSMService/host/EngineLimits.h"
#include "TovekSMService/store/EngineFolder.h"
#include "TovekSMService/store/EngineName.h"
#include "TovekSMService/time/Timer.h"

#include <QObject>
#include <QString>

#include <memory>

namespace norvane {

class Clock;
class Dispatcher;
class EngineService;
class FileLock;
class HookRunner;
class Modem;
class SerialLine;
class Store;
class StoreFailure;
class StoredPinGate;
struct EngineSettings;

/// The engine as it runs: the one of its user and its name, on the session bus.
class EngineHost : public QObject
{
    Q_OBJECT

public:
    enum class Start {
        Running,
        AlreadyThere, ///< another engine of this user and name has the store
        StoreTooNew,
        Failed,
    };

    /// @param clock  must outlive this object
    /// @param line   to the device
    EngineHost(const EngineName &name, const Clock &clock, std::unique_ptr<SerialLine> line,
               const EngineLimits &limits = {}, QObject *parent = nullptr);
    ~EngineHost() override;

    /// Brings the engine up. On a disk that can't be written it comes up as far as it can, and
    /// goes on by itself when the disk is back.
    Start start();

    /// Finishes the part in progress, within its limit, and ends the program.
    void end();

private:
    Start lockStore();
    bool isOnBus() const;
    void makeParts();
    void runHooks(const EngineSettings &settings);
    bool enterBus();
    void leaveBus();

    // The store
    /// @return false for one that this program must leave alone
    bool openStore();
    void reopenStore(bool damaged);
    void openShared();
    void warnOfLeftQueue();
    bool beginAnew(const QString &reason);
    void waitForStore(const StoreFailure &failure);
    void storeIsBack();
    void reportDamage();
    void resume();

private Q_SLOTS:
    void busLost();

private:
    const EngineName m_name;
    const EngineFolder m_folder;
    const EngineLimits m_limits;
    std::unique_ptr<FileLock> m_lock;
    const Clock &m_clock;
    std::unique_ptr<SerialLine> m_line; ///< until the modem has it
    std::unique_ptr<Store> m_store;
    std::unique_ptr<StoredPinGate> m_pinGate;
    std::unique_ptr<Modem> m_modem;
    std::unique_ptr<Dispatcher> m_dispatcher;
    std::unique_ptr<EngineService> m_service;
    std::unique_ptr<HookRunner> m_hooks;
    bool m_resumed = false;
    bool m_storeMissed = false; ///< the trouble with the store was told
    bool m_damageMet = false;   ///< of the store that is open, which was then found to be whole
    QString m_reportedDamage;
    bool m_reopenAsDamaged = false;
    Timer m_openAgain;
    Timer m_reopenAgain; ///< runs while a part in progress holds up the opening anew
    Timer m_endLimit;
};

} // namespace norvane
