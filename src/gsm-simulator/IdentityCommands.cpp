#include "gsm-simulator/CommandTable.h"

namespace simulator {

namespace {

template <QByteArray ModemSettings::*Field>
AtAnswer plain(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    return command.form == Form::Execute ? ok(modem.settings.*Field) : error();
}

AtAnswer identification(ModemState &modem, const AtCommand &)
{
    const ModemSettings &settings = modem.settings;
    return {{settings.manufacturer, settings.model, "Revision: " + settings.revision,
             "IMEI: " + settings.imei},
            Final::Ok,
            0};
}

AtAnswer capabilities(ModemState &, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    return command.form == Form::Execute ? ok("+GCAP: +CGSM") : error();
}

} // namespace

CommandEntries identityCommands()
{
    constexpr CommandHandler Manufacturer = plain<&ModemSettings::manufacturer>;
    constexpr CommandHandler Model = plain<&ModemSettings::model>;
    constexpr CommandHandler Revision = plain<&ModemSettings::revision>;
    constexpr CommandHandler Serial = plain<&ModemSettings::imei>;
    return {{"I", identification},  {"+CGMI", Manufacturer}, {"+GMI", Manufacturer},
            {"+CGMM", Model},       {"+GMM", Model},         {"+CGMR", Revision},
            {"+GMR", Revision},     {"+CGSN", Serial},       {"+GSN", Serial},
            {"+GCAP", capabilities}};
}

} // namespace simulator
