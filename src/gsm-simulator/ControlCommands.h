#pragma once

#include "gsm-simulator/ControlFault.h"
#include "gsm-simulator/ModemState.h"

#include <QByteArray>
#include <QByteArrayList>

#include <variant>

namespace norvane {

namespace simulator {

/// What can be asked of the simulator itself, beside its port: one command in a line.
///   deliver {...}      a message arrives in the network (see DeliverRequest)
///   raw HEX            so does this SMS-DELIVER or SMS-STATUS-REPORT, without a service centre
///   report N S         a report with the status S on the last message of the reference N
///   count WHAT         sent: parts accepted; submitting: parts whose answer is still to come;
///                      messages, reports: waiting in the network
///   memory NAME        places that are taken, and places, of a memory
///   registered N       the state of the registration, 0 to 5
///   signal N           the signal quality, 0 to 31, or 99 for unknown
///   unplug             takes the modem away
/// Each is answered "ok", with numbers where it asks for them, or "error" and the reason.
class ControlCommands
{
public:
    struct Outcome
    {
        QByteArray answer; ///< without a line end
        bool isRefused = false;
        bool unplugs = false;
    };

    explicit ControlCommands(ModemState &modem) : m_modem(modem) {}

    Outcome run(const QByteArray &line);

private:
    using Answer = std::variant<QByteArray, ControlFault>;

    Answer answerTo(const QByteArray &name, const QByteArray &arguments);
    Answer deliver(const QByteArray &json);
    Answer raw(const QByteArray &hexadecimal);
    Answer report(const QByteArrayList &words);
    Answer count(const QByteArray &what) const;
    Answer memory(const QByteArray &name);
    Answer setRegistered(const QByteArrayList &words);
    Answer setSignal(const QByteArrayList &words);

    ModemState &m_modem;
};

} // namespace simulator

} // namespace norvane
