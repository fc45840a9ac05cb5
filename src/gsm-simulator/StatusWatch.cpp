#include "gsm-simulator/StatusWatch.h"

#include "gsm-simulator/CommandTable.h"

#include <algorithm>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

constexpr std::size_t eventMode = 3; ///< the place of +CMER that asks for indicators

bool indicatesEvents(const ModemState &modem)
{
    return settingOf(modem.profile, "+CMER"_ba, 0) == 3 &&
           settingOf(modem.profile, "+CMER"_ba, eventMode) == 1;
}

int battery(ModemState &)
{
    return 5;
}

/// Fifths of what +CSQ can tell, rounded up.
int signalBars(ModemState &modem)
{
    constexpr int unknown = 99;
    constexpr int maxSignal = 31;
    constexpr int maxBars = 5;
    const int signal = modem.settings.signal;
    return signal == unknown ? 0 : (signal * maxBars + maxSignal - 1) / maxSignal;
}

int hasService(ModemState &modem)
{
    return modem.isRegistered() ? 1 : 0;
}

int hasUnreadMessage(ModemState &modem)
{
    auto &messages = modem.memories.find(modem.profile.memories.back())->messages();
    return std::any_of(messages.begin(), messages.end(),
                       [](const auto &entry) { return !entry.second.isRead; })
               ? 1
               : 0;
}

int hasCall(ModemState &)
{
    return 0;
}

int isRoaming(ModemState &modem)
{
    constexpr int roaming = 5;
    return modem.registration() == roaming ? 1 : 0;
}

int isMemoryFull(ModemState &modem)
{
    const MessageMemory &memory = *modem.memories.find(modem.profile.memories.back());
    return memory.used() == memory.places() ? 1 : 0;
}

} // namespace

const std::array<Indicator, 7> &indicators()
{
    static constexpr std::array<Indicator, 7> all{{{"battchg", 5, battery},
                                                   {"signal", 5, signalBars},
                                                   {"service", 1, hasService},
                                                   {"message", 1, hasUnreadMessage},
                                                   {"call", 1, hasCall},
                                                   {"roam", 1, isRoaming},
                                                   {"smsfull", 1, isMemoryFull}}};
    return all;
}

QByteArray registrationText(const ModemState &modem, int detail)
{
    QByteArray text = QByteArray::number(modem.registration());
    if (detail == 2 && modem.isRegistered())
        text += ",\"00A1\",\"0000C3D4\"";
    return text;
}

StatusWatch::StatusWatch(ModemState &modem) : m_registration(modem.registration())
{
    for (std::size_t i = 0; i < m_indicators.size(); ++i)
        m_indicators.at(i) = indicators().at(i).value(modem);
}

bool StatusWatch::isAsked(const ModemState &modem)
{
    return modem.profile.registrationReports > 0 || modem.profile.packetRegistrationReports > 0 ||
           indicatesEvents(modem);
}

QByteArrayList StatusWatch::changes(ModemState &modem)
{
    QByteArrayList lines;
    const Profile &profile = modem.profile;
    const int registration = modem.registration();
    if (std::exchange(m_registration, registration) != registration) {
        if (profile.registrationReports > 0)
            lines += "+CREG: " + registrationText(modem, profile.registrationReports);
        if (profile.packetRegistrationReports > 0)
            lines += "+CGREG: " + registrationText(modem, profile.packetRegistrationReports);
    }
    const bool indicates = indicatesEvents(modem);
    for (std::size_t i = 0; i < m_indicators.size(); ++i) {
        const int value = indicators().at(i).value(modem);
        if (std::exchange(m_indicators.at(i), value) != value && indicates)
            lines += "+CIEV: " + QByteArray::number(i + 1) + ',' + QByteArray::number(value);
    }
    return lines;
}

} // namespace simulator

} // namespace norvane
