#pragma once

#include "gsm-simulator/AtInterpreter.h"

#include <QByteArray>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

inline const QByteArray helloPdu = "0011000B916407281553F80000AA0AE8329BFD4697D9EC37"_ba;
inline const QByteArray helloPduWithRequest = "0031000B916407281553F80000AA0AE8329BFD4697D9EC37"_ba;
constexpr int helloLength = 23;

/// A modem whose echo is off, and what it has accepted so far.
class TalkingModem
{
public:
    explicit TalkingModem(const ModemSettings &settings = {}) : interpreter(settings)
    {
        interpreter.take("ATE0\r");
    }

    /// What the modem says to `bytes`.
    QByteArray say(const QByteArray &bytes) { return note(interpreter.take(bytes)); }

    /// The answer to one command, its line ends told as "|".
    QByteArray ask(const QByteArray &command)
    {
        QByteArray answer = say(command + '\r');
        return answer.replace("\r\n\r\n", "|").replace("\r\n", "").replace('\r', "<CR>");
    }

    /// The answer to one command, or what is said when time has passed, its lines joined by "|".
    QByteArray lines(const QByteArray &command) { return joined(say(command + '\r')); }
    QByteArray wake() { return joined(note(interpreter.wake())); }

    /// The answer to a command of the simulator's own; what the modem says of it comes with wake().
    QByteArray control(const QByteArray &line) { return interpreter.control(line).answer; }

    /// What the modem says to a message that arrives.
    QByteArray deliver(const QByteArray &json)
    {
        const QByteArray answer = control("deliver " + json);
        return answer.startsWith("ok") ? wake() : answer;
    }

    QByteArray resume() { return note(interpreter.resume()); }

    QByteArray submitHello() { return submitPdu(helloPdu, helloLength); }

    /// Submits a PDU that asks for a status report.
    QByteArray submitWithRequest() { return submitPdu(helloPduWithRequest, helloLength); }

    QByteArray submitPdu(const QByteArray &pdu, int length)
    {
        const QByteArray prompt = say("AT+CMGS=" + QByteArray::number(length) + '\r');
        if (prompt != "\r\n> ")
            return prompt;
        return say(pdu + '\x1A').trimmed().replace("\r\n\r\n", "|");
    }

    QByteArray submitText(const QByteArray &arguments, const QByteArray &text)
    {
        const QByteArray prompt = say("AT+CMGS=" + arguments + '\r');
        if (prompt != "\r\n> ")
            return prompt.trimmed();
        return say(text + '\x1A').trimmed().replace("\r\n\r\n", "|");
    }

    AtInterpreter interpreter;
    std::vector<AcceptedMessage> accepted;
    std::chrono::milliseconds pause{0};
    bool unplugged = false;

private:
    static QByteArray joined(const QByteArray &said)
    {
        return said.trimmed().replace("\r\n\r\n", "|").replace("\r\n", "|");
    }

    QByteArray note(const Step &step)
    {
        accepted.insert(accepted.end(), step.accepted.begin(), step.accepted.end());
        pause = step.pause;
        unplugged = unplugged || step.unplugged;
        return step.output;
    }
};

} // namespace simulator

} // namespace norvane
