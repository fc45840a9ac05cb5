#include "gsm-simulator/CommandTable.h"
#include "gsm-simulator/StatusWatch.h"

namespace norvane {

namespace simulator {

namespace {

AtAnswer registrationState(ModemState &modem, const AtCommand &command, int &reports)
{
    if (command.form != Form::Read)
        return choice(command, reports, {0, 1, 2}, equipmentError(EquipmentFailure::badParameters));
    return ok(command.name + ": " + QByteArray::number(reports) + ',' +
              registrationText(modem, reports));
}

AtAnswer registration(ModemState &modem, const AtCommand &command)
{
    return registrationState(modem, command, modem.profile.registrationReports);
}

AtAnswer packetRegistration(ModemState &modem, const AtCommand &command)
{
    return registrationState(modem, command, modem.profile.packetRegistrationReports);
}

AtAnswer indicatorValues(ModemState &modem, const AtCommand &command)
{
    QByteArrayList texts;
    for (const Indicator &indicator : indicators()) {
        if (command.form == Form::Test) {
            const char *dash = indicator.max > 1 ? "-" : ",";
            texts += "(\"" + QByteArray(indicator.name) + "\",(0" + dash +
                     QByteArray::number(indicator.max) + "))";
        } else {
            texts += QByteArray::number(indicator.value(modem));
        }
    }
    if (command.form != Form::Test && command.form != Form::Read)
        return equipmentError(EquipmentFailure::notAllowed);
    return ok("+CIND: " + texts.join(','));
}

} // namespace

CommandEntries statusCommands()
{
    return {{"+CREG", registration}, {"+CGREG", packetRegistration}, {"+CIND", indicatorValues}};
}

} // namespace simulator

} // namespace norvane
