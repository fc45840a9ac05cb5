#pragma once

#include <QByteArray>

namespace norvane {

namespace simulator {

/// The locks of a SIM card: three tries for its PIN, then ten for the code that unblocks it.
class SimCard
{
public:
    enum class State { Ready, PinNeeded, PukNeeded, Blocked };
    enum class Outcome { Accepted, Wrong, Malformed, NotAsked };

    /// @param pin  empty: the card asks for none
    SimCard(const QByteArray &pin, const QByteArray &puk);

    State state() const;
    bool asksForPin() const { return !m_pin.isEmpty(); }
    int pinTriesLeft() const { return m_pinTries; }
    int pukTriesLeft() const { return m_pukTries; }

    Outcome enterPin(const QByteArray &pin);
    Outcome unblock(const QByteArray &puk, const QByteArray &newPin);

    /// The card asks again, as after the modem's restart. Used tries stay used.
    void restart() { m_entered = false; }

private:
    QByteArray m_pin;
    QByteArray m_puk;
    int m_pinTries;
    int m_pukTries;
    bool m_entered = false;
};

} // namespace simulator

} // namespace norvane
