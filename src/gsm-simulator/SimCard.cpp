#include "gsm-simulator/SimCard.h"

#include <algorithm>

namespace norvane {

namespace simulator {

namespace {

constexpr int pinTries = 3;
constexpr int pukTries = 10;

bool isCode(const QByteArray &code, qsizetype min, qsizetype max)
{
    return code.size() >= min && code.size() <= max &&
           std::all_of(code.begin(), code.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

SimCard::SimCard(const QByteArray &pin, const QByteArray &puk)
    : m_pin(pin), m_puk(puk), m_pinTries(pinTries), m_pukTries(pukTries)
{}

SimCard::State SimCard::state() const
{
    if (m_pukTries == 0)
        return State::Blocked;
    if (m_pinTries == 0)
        return State::PukNeeded;
    return m_entered || m_pin.isEmpty() ? State::Ready : State::PinNeeded;
}

SimCard::Outcome SimCard::enterPin(const QByteArray &pin)
{
    if (state() != State::PinNeeded)
        return Outcome::NotAsked;
    if (!isCode(pin, 4, 8))
        return Outcome::Malformed;
    if (pin != m_pin) {
        --m_pinTries;
        return Outcome::Wrong;
    }
    m_pinTries = pinTries;
    m_entered = true;
    return Outcome::Accepted;
}

SimCard::Outcome SimCard::unblock(const QByteArray &puk, const QByteArray &newPin)
{
    if (state() != State::PukNeeded)
        return Outcome::NotAsked;
    if (!isCode(puk, 8, 8) || !isCode(newPin, 4, 8))
        return Outcome::Malformed;
    if (puk != m_puk) {
        --m_pukTries;
        return Outcome::Wrong;
    }
    m_pin = newPin;
    m_pinTries = pinTries;
    m_pukTries = pukTries;
    m_entered = true;
    return Outcome::Accepted;
}

} // namespace simulator

} // namespace norvane
