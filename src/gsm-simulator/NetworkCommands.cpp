#include "gsm-simulator/CommandTable.h"
#include "gsm-simulator/TextCoding.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

const AtAnswer badParametersError = equipmentError(EquipmentFailure::badParameters);

QByteArray operatorName(const Profile &profile)
{
    switch (profile.operatorFormat) {
    case 0:
        return inCharacterSet(u"Simulated network"_s, profile.characterSet);
    case 1:
        return inCharacterSet(u"SIMNET"_s, profile.characterSet);
    default:
        return "00101"_ba;
    }
}

AtAnswer setOperator(ModemState &modem, const AtCommand &command)
{
    constexpr int formatOnly = 3;
    constexpr int maxMode = 4;
    const std::vector<AtArgument> arguments = splitArguments(command.arguments);
    const auto mode = numbersOf(arguments.at(0).text);
    if (!mode || mode->front() < 0 || mode->front() > maxMode || arguments.size() > 4)
        return badParametersError;
    int format = modem.profile.operatorFormat;
    if (arguments.size() > 1) {
        const auto given = numbersOf(arguments.at(1).text);
        if (!given || given->front() > 2)
            return badParametersError;
        format = given->front() < 0 ? format : given->front();
    }
    modem.profile.operatorFormat = format;
    if (mode->front() != formatOnly)
        modem.profile.operatorMode = mode->front();
    return ok();
}

AtAnswer networkOperator(ModemState &modem, const AtCommand &command)
{
    Profile &profile = modem.profile;
    const QByteArray mode = QByteArray::number(profile.operatorMode);
    switch (command.form) {
    case Form::Test:
        return ok("+COPS: (2,\"Simulated network\",\"SIMNET\",\"00101\"),,(0,1,2,3,4),(0,1,2)");
    case Form::Read:
        if (!modem.isRegistered())
            return ok("+COPS: " + mode);
        return ok("+COPS: " + mode + ',' + QByteArray::number(profile.operatorFormat) + ",\"" +
                  operatorName(profile) + '"');
    case Form::Set:
        return setOperator(modem, command);
    default:
        return error();
    }
}

AtAnswer signal(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok("+CSQ: (0-31,99),(0-7,99)");
    if (command.form != Form::Execute)
        return error();
    return ok("+CSQ: " + QByteArray::number(modem.settings.signal) + ",99");
}

/// +CESQ (3GPP TS 27.007, 8.69): the level of a GSM cell begins 3 dB higher, in steps of 1 dB.
AtAnswer extendedSignal(ModemState &modem, const AtCommand &command)
{
    constexpr int unknown = 99;
    constexpr int maxLevel = 63;
    if (command.form == Form::Test)
        return ok("+CESQ: (0-63,99),(0-7,99),(0-96,255),(0-49,255),(0-34,255),(0-97,255)");
    if (command.form != Form::Execute)
        return error();
    const int signal = modem.settings.signal;
    const int level = signal == unknown ? unknown : std::clamp(2 * signal - 2, 0, maxLevel);
    return ok("+CESQ: " + QByteArray::number(level) + ",99,255,255,255,255");
}

AtAnswer battery(ModemState &, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok("+CBC: (0-3),(0-100)");
    return command.form == Form::Execute ? ok("+CBC: 0,100") : error();
}

AtAnswer clockTime(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test || command.form == Form::Set)
        return ok();
    if (command.form != Form::Read)
        return error();
    constexpr int quarterOfAnHour = 900;
    const QDateTime now = modem.settings.clock();
    const int quarters = now.offsetFromUtc() / quarterOfAnHour;
    return ok("+CCLK: \"" + now.toString(u"yy/MM/dd,hh:mm:ss").toLatin1() +
              (quarters < 0 ? '-' : '+') +
              QByteArray::number(qAbs(quarters)).rightJustified(2, '0') + '"');
}

AtAnswer functionality(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok("+CFUN: (0,1,4),(0,1)");
    if (command.form != Form::Set)
        return choice(command, modem.functionality, {0, 1, 4}, badParametersError);
    const auto numbers = numbersOf(command.arguments);
    if (!numbers || numbers->size() > 2)
        return badParametersError;
    const int level = numbers->front();
    const int restart = numbers->size() == 2 ? numbers->back() : 0;
    if ((level != 0 && level != 1 && level != 4) || restart < 0 || restart > 1)
        return badParametersError;
    if (restart == 1)
        modem.restart();
    modem.setFunctionality(level);
    return ok();
}

/// +WS46 (3GPP TS 27.007, 5.9), whose answers have no name in front.
AtAnswer accessTechnology(ModemState &, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok("(12)");
    if (command.form == Form::Read)
        return ok("12");
    return command.form == Form::Set && command.arguments == "12" ? ok() : badParametersError;
}

/// The list of preferred networks: there are places for it, and the card lets nobody write them.
AtAnswer preferredNetworks(ModemState &, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok("+CPOL: (1-8),(0-2)");
    if (command.form == Form::Read)
        return ok();
    const auto numbers = numbersOf(command.arguments);
    const bool setsFormat = numbers && numbers->size() == 2 && numbers->front() < 0 &&
                            numbers->back() >= 0 && numbers->back() <= 2;
    return command.form == Form::Set && setsFormat ? ok()
                                                   : equipmentError(EquipmentFailure::notAllowed);
}

/// There are no calls.
AtAnswer currentCalls(ModemState &, const AtCommand &command)
{
    return command.form == Form::Test || command.form == Form::Execute ? ok() : error();
}

AtAnswer errorReport(ModemState &, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    return command.form == Form::Execute ? ok("+CEER: No report available") : error();
}

AtAnswer activity(ModemState &, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok("+CPAS: (0,3,4)");
    return command.form == Form::Execute ? ok("+CPAS: 0") : error();
}

} // namespace

CommandEntries networkCommands()
{
    return {{"+COPS", networkOperator},
            {"+CSQ", signal},
            {"+CBC", battery},
            {"+CCLK", clockTime},
            {"+CFUN", functionality},
            {"+CPAS", activity},
            {"+CESQ", extendedSignal},
            {"+WS46", accessTechnology},
            {"+CPOL", preferredNetworks},
            {"+CLCC", currentCalls},
            {"+CEER", errorReport}};
}

} // namespace simulator

} // namespace norvane
