#include "gsm-simulator/CommandTable.h"

namespace norvane {

namespace simulator {

namespace {

AtAnswer setFlag(const AtCommand &command, int &flag)
{
    if (command.arguments.size() > 1 || command.arguments > "1")
        return error();
    flag = command.arguments == "1" ? 1 : 0;
    return ok();
}

AtAnswer echo(ModemState &modem, const AtCommand &command)
{
    return setFlag(command, modem.profile.echo);
}

AtAnswer quiet(ModemState &modem, const AtCommand &command)
{
    return setFlag(command, modem.profile.quiet);
}

AtAnswer verbose(ModemState &modem, const AtCommand &command)
{
    return setFlag(command, modem.profile.verbose);
}

AtAnswer restoreProfileCommand(ModemState &modem, const AtCommand &)
{
    modem.restoreProfile();
    return ok();
}

AtAnswer accepted(ModemState &, const AtCommand &)
{
    return ok();
}

AtAnswer noCall(ModemState &, const AtCommand &)
{
    return {{}, Final::NoCarrier, 0};
}

AtAnswer registerValue(ModemState &modem, const AtCommand &command)
{
    const auto number = command.name.mid(1).toUInt();
    if (number >= modem.profile.registers.size())
        return error();
    int &value = modem.profile.registers.at(number);
    if (command.form == Form::Read)
        return ok(QByteArray::number(value).rightJustified(3, '0'));
    constexpr int max = 255;
    const auto given = numbersOf(command.arguments);
    if (command.form != Form::Set || !given || given->front() > max)
        return error();
    value = given->front() < 0 ? 0 : given->front();
    return ok();
}

AtAnswer errorForm(ModemState &modem, const AtCommand &command)
{
    return choice(command, modem.profile.errorForm, {0, 1, 2},
                  equipmentError(EquipmentFailure::badParameters));
}

AtAnswer commandList(ModemState &, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    if (command.form != Form::Execute)
        return error();
    return {extendedCommandNames(), Final::Ok, 0};
}

} // namespace

CommandEntries basicCommands()
{
    CommandEntries entries{{"E", echo},
                           {"Q", quiet},
                           {"V", verbose},
                           {"Z", restoreProfileCommand},
                           {"&F", restoreProfileCommand},
                           {"H", accepted},
                           {"L", accepted},
                           {"M", accepted},
                           {"X", accepted},
                           {"&C", accepted},
                           {"&D", accepted},
                           {"&K", accepted},
                           {"&S", accepted},
                           {"&W", accepted},
                           {"A", noCall},
                           {"D", noCall},
                           {"+CMEE", errorForm},
                           {"+CLAC", commandList}};
    static constexpr const char *registers[] = {"S0", "S1", "S2", "S3",  "S4",  "S5", "S6",
                                                "S7", "S8", "S9", "S10", "S11", "S12"};
    for (const char *name : registers)
        entries.push_back({name, registerValue});
    return entries;
}

} // namespace simulator

} // namespace norvane
