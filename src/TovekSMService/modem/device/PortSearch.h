#pragma once

#include "TovekSMService/modem/at/AtChannel.h"
#include "TovekSMService/time/Deadline.h"
#include "TovekSMService/time/Timer.h"

#include <QHash>
#include <QObject>
#include <QStringList>

#include <functional>

namespace norvane {

/// Looks for a device that has come back under another name: asks the platform's serial ports, one
/// after the other, for their IMEI, and nothing else. A port that another program has open is left
/// alone. So is one behind which something else has answered, or nothing for many times, as long
/// as it stays plugged in: what stands there may be anything, and is disturbed by questions.
class PortSearch : public QObject
{
    Q_OBJECT

public:
    using Ports = std::function<QStringList()>;
    /// @param port where the device was found, with the line open to it; empty if it wasn't
    using Finished = std::function<void(const QString &port)>;

    /// How often a port that says nothing is asked.
    static constexpr int maxSilentTries = 8;
    /// How many ports one search asks at most.
    static constexpr int maxPorts = 16;

    /// @param line, channel used during a search only; outlive this object, as `time` does
    PortSearch(SerialLine &line, AtChannel &channel, const ModemTimings &timings, Ports ports,
               TimeSource &time = TimeSource::system());

    void start(const QString &imei, int baud, Finished finished);
    /// Ends without a word to the function given to `start`.
    void stop();
    bool isRunning() const { return m_finished != nullptr; }

private:
    struct Known
    {
        quint64 node = 0;
        int asked = 0;
        bool isOther = false;
    };

    QStringList candidates();
    void next();
    void look(const QString &port);
    void ask(const QByteArray &command);
    void onAnswer(const QByteArray &command, const AtAnswer &answer);
    void giveUpPort();
    void finish(const QString &port);

    SerialLine &m_line;
    AtChannel &m_channel;
    const ModemTimings m_timings;
    const Ports m_ports;
    QHash<QString, Known> m_known; ///< by the path of the device itself

    QString m_imei;
    int m_baud = 0;
    Finished m_finished;
    QStringList m_left;
    QString m_port;
    QString m_device;
    quint64 m_step = 0; ///< tells a late answer from the present port's
    Timer m_portLimit;
    Timer m_nextPort;
    Deadline m_limit;
};

} // namespace norvane
