#include "gsm-simulator/CardFiles.h"
#include "gsm-simulator/CommandTable.h"
#include "gsm-simulator/PduDecoder.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

AtAnswer lockedAnswer(SimCard::State state)
{
    switch (state) {
    case SimCard::State::PinNeeded:
        return equipmentError(EquipmentFailure::pinRequired);
    case SimCard::State::PukNeeded:
        return equipmentError(EquipmentFailure::pukRequired);
    default:
        return equipmentError(EquipmentFailure::simFailure);
    }
}

/// Commands to a card without power.
template <AtAnswer (*handler)(ModemState &, const AtCommand &)>
AtAnswer powered(ModemState &modem, const AtCommand &command)
{
    return modem.hasSim() || command.form == Form::Test
               ? handler(modem, command)
               : equipmentError(EquipmentFailure::simFailure);
}

AtAnswer subscriber(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    if (command.form != Form::Execute)
        return error();
    if (modem.sim.state() != SimCard::State::Ready)
        return lockedAnswer(modem.sim.state());
    return ok(modem.settings.imsi);
}

/// The card's own number can be read before any PIN.
AtAnswer cardNumber(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    if (command.form == Form::Set)
        return error();
    return ok(command.name + ": " + modem.settings.iccid);
}

QByteArray askedCode(SimCard::State state)
{
    switch (state) {
    case SimCard::State::Ready:
        return "READY"_ba;
    case SimCard::State::PinNeeded:
        return "SIM PIN"_ba;
    default:
        return "SIM PUK"_ba;
    }
}

AtAnswer enterCode(SimCard &sim, const AtCommand &command)
{
    const std::vector<AtArgument> codes = splitArguments(command.arguments);
    const SimCard::State before = sim.state();
    if (before == SimCard::State::PukNeeded && codes.size() == 1)
        return lockedAnswer(before);
    if (codes.size() > 2)
        return equipmentError(EquipmentFailure::badParameters);
    const SimCard::Outcome outcome = codes.size() == 1
                                         ? sim.enterPin(codes.at(0).text)
                                         : sim.unblock(codes.at(0).text, codes.at(1).text);
    switch (outcome) {
    case SimCard::Outcome::Accepted:
        return ok();
    case SimCard::Outcome::Wrong:
        return equipmentError(EquipmentFailure::wrongPassword);
    case SimCard::Outcome::Malformed:
        return equipmentError(EquipmentFailure::badParameters);
    case SimCard::Outcome::NotAsked:
        break;
    }
    return equipmentError(before == SimCard::State::Blocked ? EquipmentFailure::simFailure
                                                            : EquipmentFailure::notAllowed);
}

AtAnswer pin(ModemState &modem, const AtCommand &command)
{
    switch (command.form) {
    case Form::Test:
        return ok();
    case Form::Read:
        if (modem.sim.state() == SimCard::State::Blocked)
            return lockedAnswer(modem.sim.state());
        return ok("+CPIN: " + askedCode(modem.sim.state()));
    case Form::Set:
        return enterCode(modem.sim, command);
    default:
        return error();
    }
}

/// Tries left: all codes of the card, or the one that is asked for by name.
AtAnswer triesLeft(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    const QByteArray pinLine = "+CPINR: SIM PIN," + QByteArray::number(modem.sim.pinTriesLeft());
    const QByteArray pukLine = "+CPINR: SIM PUK," + QByteArray::number(modem.sim.pukTriesLeft());
    if (command.form == Form::Execute)
        return {{pinLine + ",3", pukLine + ",10"}, Final::Ok, 0};
    const QByteArray asked = splitArguments(command.arguments).front().text;
    if (command.form == Form::Set && asked == "SIM PIN")
        return ok(pinLine + ",3");
    if (command.form == Form::Set && asked == "SIM PUK")
        return ok(pukLine + ",10");
    return equipmentError(EquipmentFailure::badParameters);
}

AtAnswer facilityLock(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok("+CLCK: (\"SC\")");
    const std::vector<AtArgument> arguments = splitArguments(command.arguments);
    if (command.form != Form::Set || arguments.size() < 2 || arguments.at(0).text != "SC")
        return equipmentError(EquipmentFailure::notSupported);
    if (arguments.at(1).text != "2")
        return equipmentError(EquipmentFailure::notAllowed);
    return ok(modem.sim.asksForPin() ? "+CLCK: 1" : "+CLCK: 0");
}

/// The card holds no number of its own.
AtAnswer ownNumbers(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    if (command.form != Form::Execute)
        return error();
    return modem.sim.state() == SimCard::State::Ready ? ok() : lockedAnswer(modem.sim.state());
}

/// +CRSM (3GPP TS 27.007, 8.18), of which READ BINARY is known.
AtAnswer restrictedAccess(ModemState &modem, const AtCommand &command)
{
    constexpr int readBinary = 176;
    constexpr int maxOctet = 255;
    constexpr int unknownInstruction = 0x6D00;
    if (command.form == Form::Test)
        return ok();
    const auto numbers = numbersOf(command.arguments);
    if (command.form != Form::Set || !numbers || numbers->front() < 0)
        return equipmentError(EquipmentFailure::badParameters);
    CardAnswer answer{unknownInstruction, {}};
    if (numbers->front() == readBinary) {
        for (std::size_t i = 2; i < numbers->size(); ++i) {
            if (numbers->at(i) < 0 || numbers->at(i) > maxOctet)
                return equipmentError(EquipmentFailure::badParameters);
        }
        if (numbers->size() != 5)
            return equipmentError(EquipmentFailure::badParameters);
        answer = readCardFile(modem, numbers->at(1), numbers->at(2) * 256 + numbers->at(3),
                              numbers->at(4));
    }
    QByteArray line = "+CRSM: " + QByteArray::number(answer.status >> 8) + ',' +
                      QByteArray::number(answer.status & maxOctet);
    if (!answer.data.isEmpty())
        line += ",\"" + answer.data.toHex().toUpper() + '"';
    return ok(line);
}

/// +CSIM (3GPP TS 27.007, 8.17): the length tells the digits of the command.
AtAnswer genericAccess(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    const std::vector<AtArgument> arguments = splitArguments(command.arguments);
    if (command.form != Form::Set || arguments.size() != 2)
        return equipmentError(EquipmentFailure::badParameters);
    const auto length = numbersOf(arguments.front().text);
    const QByteArray &digits = arguments.back().text;
    const auto octets = octetsOfHexadecimal(digits);
    if (!length || length->front() != digits.size() || !octets)
        return equipmentError(EquipmentFailure::badParameters);
    const CardAnswer answer = runCardCommand(modem, *octets);
    const QByteArray response =
        (answer.data.toHex() + QByteArray::number(answer.status, 16)).toUpper();
    return ok("+CSIM: " + QByteArray::number(response.size()) + ",\"" + response + '"');
}

} // namespace

CommandEntries simCommands()
{
    return {{"+CIMI", powered<subscriber>},    {"+CCID", powered<cardNumber>},
            {"+ICCID", powered<cardNumber>},   {"^ICCID", powered<cardNumber>},
            {"+CPIN", powered<pin>},           {"+CPINR", powered<triesLeft>},
            {"+CLCK", powered<facilityLock>},  {"+CRSM", powered<restrictedAccess>},
            {"+CSIM", powered<genericAccess>}, {"+CNUM", powered<ownNumbers>}};
}

} // namespace simulator

} // namespace norvane
