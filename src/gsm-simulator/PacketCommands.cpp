#include "gsm-simulator/CommandTable.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

constexpr int maxContext = 3;

/// +CGDCONT (3GPP TS 27.007, 10.1.1): a context's number alone takes it away.
AtAnswer defineContext(ModemState &modem, const AtCommand &command)
{
    static const QByteArrayList types{"IP"_ba, "IPV6"_ba, "IPV4V6"_ba};
    const std::vector<AtArgument> given = splitArguments(command.arguments);
    const auto number = numbersOf(given.front().text);
    if (command.form != Form::Set || !number || number->front() < 1 || number->front() > maxContext)
        return equipmentError(EquipmentFailure::badParameters);
    if (given.size() == 1) {
        modem.packetContexts.erase(number->front());
        return ok();
    }
    if (!types.contains(given.at(1).text.toUpper()))
        return equipmentError(EquipmentFailure::badParameters);
    modem.packetContexts[number->front()] = {given.at(1).text.toUpper(),
                                             given.size() > 2 ? given.at(2).text : QByteArray()};
    return ok();
}

AtAnswer contexts(ModemState &modem, const AtCommand &command)
{
    QByteArrayList lines;
    if (command.form == Form::Test) {
        for (const char *type : {"IP", "IPV6", "IPV4V6"})
            lines +=
                "+CGDCONT: (1-" + QByteArray::number(maxContext) + "),\"" + type + "\",,,(0),(0)";
        return {lines, Final::Ok, 0};
    }
    if (command.form != Form::Read)
        return defineContext(modem, command);
    for (const auto &[number, context] : modem.packetContexts)
        lines += "+CGDCONT: " + QByteArray::number(number) + ",\"" + context.type + "\",\"" +
                 context.accessPoint + "\",\"\",0,0";
    return {lines, Final::Ok, 0};
}

/// No context is ever active: there are messages alone.
AtAnswer contextStates(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok("+CGACT: (0)");
    if (command.form != Form::Read)
        return equipmentError(EquipmentFailure::notSupported);
    QByteArrayList lines;
    for (const auto &[number, context] : modem.packetContexts)
        lines += "+CGACT: " + QByteArray::number(number) + ",0";
    return {lines, Final::Ok, 0};
}

} // namespace

CommandEntries packetCommands()
{
    return {{"+CGDCONT", contexts}, {"+CGACT", contextStates}};
}

} // namespace simulator

} // namespace norvane
