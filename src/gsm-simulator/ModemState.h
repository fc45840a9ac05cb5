#pragma once

#include "gsm-simulator/Address.h"
#include "gsm-simulator/MessageMemory.h"
#include "gsm-simulator/ModemSettings.h"
#include "gsm-simulator/Reception.h"
#include "gsm-simulator/RelayLink.h"
#include "gsm-simulator/ServiceCentre.h"
#include "gsm-simulator/SimCard.h"

#include <QByteArray>

#include <array>
#include <map>
#include <vector>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

/// What commands set and ATZ, AT&F and a restart bring back.
struct Profile
{
    int echo = 1;
    int quiet = 0;
    int verbose = 1;
    std::array<int, 13> registers{0, 0, 43, 13, 10, 8, 2, 50, 2, 6, 14, 95, 50};
    int errorForm = 0; ///< +CMEE
    int registrationReports = 0;
    int packetRegistrationReports = 0;
    int operatorFormat = 0;
    int operatorMode = 0;
    int textFormat = 0; ///< +CMGF
    int showDetails = 0;
    int service = 0;
    std::array<int, 5> indications{0, 0, 0, 0, 0};
    std::array<QByteArray, 3> memories{"SM"_ba, "SM"_ba, "SM"_ba};
    QByteArray characterSet = "GSM"_ba;
    int firstOctet = 17;
    QByteArray validity = "167"_ba;
    int protocol = 0;
    int dataCodingScheme = 0;
    QByteArray serviceCentre = "+34600000000"_ba;
    std::map<QByteArray, std::vector<int>> settings; ///< of settingCommands(), where not default
};

/// +CGDCONT
struct PacketContext
{
    QByteArray type;
    QByteArray accessPoint;
};

struct ModemState
{
    explicit ModemState(const ModemSettings &given)
        : settings(given), sim(given.pin, given.puk), memories(given.reception.memories),
          network(given.reports)
    {
        restoreProfile();
        setFunctionality(given.functionality);
    }

    void restoreProfile()
    {
        profile = Profile();
        profile.memories.fill(settings.reception.memories.front().name);
        link.reset();
        profile.textFormat = settings.formats == Formats::TextOnly ? 1 : 0;
    }

    void restart()
    {
        restoreProfile();
        sim.restart();
        functionality = noFunctionality;
        setFunctionality(fullFunctionality);
    }

    /// +CFUN (3GPP TS 27.007, 8.2, table 61): 1 is everything, 4 the modem without its radio, 0
    /// without its SIM as well.
    void setFunctionality(int level)
    {
        if (level != fullFunctionality)
            link.reset();
        else if (functionality != fullFunctionality && settings.registerAfter.count() > 0)
            radioSince = settings.clock();
        if (level == noFunctionality)
            sim.restart();
        functionality = level;
    }

    bool hasSim() const { return functionality != noFunctionality; }

    /// The registration as +CREG tells it: none without a free SIM and a radio, and a search until
    /// the time for that has passed.
    int registration() const
    {
        if (sim.state() != SimCard::State::Ready || functionality != fullFunctionality)
            return 0;
        constexpr int searching = 2;
        const bool searches = radioSince.isValid() &&
                              radioSince.msecsTo(settings.clock()) < settings.registerAfter.count();
        return searches ? searching : settings.registered;
    }

    /// When the search for a network ends, or nothing if there is none.
    std::optional<QDateTime> registrationDue() const
    {
        constexpr int searching = 2;
        if (registration() != searching || !radioSince.isValid())
            return std::nullopt;
        return radioSince.addMSecs(settings.registerAfter.count());
    }

    /// What the network still holds in a lane, with what isn't acknowledged.
    int waitingCount(ServiceCentre::Lane lane) const
    {
        return static_cast<int>(network.count(lane)) + (reception.isAwaiting(lane) ? 1 : 0);
    }

    bool isRegistered() const { return registration() == 1 || registration() == 5; }

    static constexpr int noFunctionality = 0;
    static constexpr int fullFunctionality = 1;

    ModemSettings settings;
    Profile profile;
    SimCard sim;
    RelayLink link;
    MessageMemories memories;
    ServiceCentre network;
    Reception reception;
    std::map<int, PacketContext> packetContexts; ///< by their numbers
    int functionality = noFunctionality;
    QDateTime radioSince;      ///< kept where the registration takes its time
    bool isSubmitting = false; ///< a submission's answer is still to come
    int entryLength = 0;       ///< octets of the PDU that the prompt is open for
    /// +CNMA: what the PDU acknowledges that the prompt is open for; nothing for +CMGS
    std::optional<Reception::Acknowledgement> entryAcknowledges;
    Address entryAddress; ///< +CMGS: the recipient of the text that the prompt is open for
};

} // namespace simulator

} // namespace norvane
