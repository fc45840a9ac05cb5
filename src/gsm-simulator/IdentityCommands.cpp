#include "gsm-simulator/CommandTable.h"

namespace norvane {

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
    constexpr CommandHandler manufacturerCommand = plain<&ModemSettings::manufacturer>;
    constexpr CommandHandler modelCommand = plain<&ModemSettings::model>;
    constexpr CommandHandler revisionCommand = plain<&ModemSettings::revision>;
    constexpr CommandHandler serialCommand = plain<&ModemSettings::imei>;
    return {{"I", identification},         {"+CGMI", manufacturerCommand},
            {"+GMI", manufacturerCommand}, {"+CGMM", modelCommand},
            {"+GMM", modelCommand},        {"+CGMR", revisionCommand},
            {"+GMR", revisionCommand},     {"+CGSN", serialCommand},
            {"+GSN", serialCommand},       {"+GCAP", capabilities}};
}

} // namespace simulator

} // namespace norvane
