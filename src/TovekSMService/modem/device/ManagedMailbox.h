#pragma once

#include "TovekSMService/modem/at/ModemTimings.h"
#include "TovekSMService/modem/device/Arrival.h"
#include "TovekSMService/modem/manager/ManagerBus.h"
#include "TovekSMService/time/Timer.h"

#include <QList>
#include <QSet>
#include <QString>
#include <QVariantMap>

#include <functional>

namespace norvane {

/// What the network sent to a device that the modem manager owns: messages and status reports, as
/// objects of the manager. None is deleted before whoever took it has said that it is stored.
class ManagedMailbox
{
public:
    using Read = std::function<void(const QList<Arrival> &)>;

    /// @param due  called when isDue() has become true
    ManagedMailbox(const ModemTimings &timings, std::function<void()> due, TimeSource &time);

    /// What the device has already is due afterwards.
    /// @param bus  outlives this object, or its reset()
    void setUp(ManagerBus &bus, const QString &device);
    void reset();

    /// A message came.
    void note(const QString &message);
    /// The last part of a message came, perhaps of another device's.
    void noteComplete(const QString &message);
    bool isDue() const { return m_isDue; }
    /// Deletes what is stored, and reads some of what waits.
    void work(Read read);
    void dismiss(const QList<Arrival> &arrivals);
    /// What was read could not be stored: it is read again later.
    void defer(const QList<Arrival> &arrivals);

    /// Something that came, by the properties of its object; nothing for what is no message or
    /// report, or has parts missing.
    static std::optional<Arrival> arrivalOf(const QString &message, const QVariantMap &properties);

private:
    void list();
    void setDue();
    void step();
    void deleteNext();
    void onNotDeleted(const Arrival &arrival, const QDBusMessage &error);
    void readNext();
    void endTurn();

    const ModemTimings m_timings;
    const std::function<void()> m_due;
    Timer m_again;       ///< until what could not be stored or read is looked at again
    Timer m_deleteAgain; ///< until what could not be deleted is tried again
    bool m_isListDue = false;
    ManagerBus *m_bus = nullptr;
    QString m_device;
    QSet<QString> m_known; ///< messages of this device
    QList<QString> m_toRead;
    QList<QString> m_later; ///< that could not be read or stored
    QList<Arrival> m_toDelete;
    QList<Arrival> m_toDeleteLater;
    QSet<QString> m_kept; ///< read already, and the manager won't delete them
    bool m_isDue = false;
    Read m_read;
    QList<Arrival> m_arrivals; ///< of the turn in progress
};

} // namespace norvane
