#include "gsm-simulator/CommandTable.h"
#include "gsm-simulator/TextCoding.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

const AtAnswer notAllowedError = messageError(MessageFailure::notAllowed);

AtAnswer service(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Read)
        return ok("+CSMS: " + QByteArray::number(modem.profile.service) + ",1,1,1");
    AtAnswer answer = choice(command, modem.profile.service, {0, 1}, notAllowedError);
    if (command.form == Form::Set && answer.final == Final::Ok)
        answer.lines += "+CSMS: 1,1,1";
    return answer;
}

AtAnswer format(ModemState &modem, const AtCommand &command)
{
    switch (modem.settings.formats) {
    case Formats::PduOnly:
        return choice(command, modem.profile.textFormat, {0}, notAllowedError);
    case Formats::TextOnly:
        return choice(command, modem.profile.textFormat, {1}, notAllowedError);
    default:
        return choice(command, modem.profile.textFormat, {0, 1}, notAllowedError);
    }
}

AtAnswer serviceCentre(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    if (const auto locked = lockedMessages(modem))
        return *locked;
    Profile &profile = modem.profile;
    if (command.form == Form::Read) {
        const QByteArray type = profile.serviceCentre.startsWith('+') ? "145" : "129";
        return ok("+CSCA: \"" +
                  inCharacterSet(QString::fromLatin1(profile.serviceCentre), profile.characterSet) +
                  "\"," + type);
    }
    if (command.form != Form::Set)
        return error();
    const std::vector<AtArgument> arguments = splitArguments(command.arguments);
    const auto number = numberFromCharacterSet(arguments.front().text, profile.characterSet);
    if (!number || arguments.size() > 2)
        return messageError(MessageFailure::badTextParameter);
    profile.serviceCentre = number->toLatin1();
    return ok();
}

AtAnswer moreMessages(ModemState &modem, const AtCommand &command)
{
    int mode = modem.link.mode(modem.settings.clock());
    const AtAnswer answer =
        choice(command, mode, {RelayLink::Closed, RelayLink::KeptForRow, RelayLink::Kept},
               notAllowedError);
    modem.link.setMode(mode);
    return answer;
}

AtAnswer showDetails(ModemState &modem, const AtCommand &command)
{
    return choice(command, modem.profile.showDetails, {0, 1}, notAllowedError);
}

AtAnswer textParameters(ModemState &modem, const AtCommand &command)
{
    constexpr int maxOctet = 255;
    Profile &profile = modem.profile;
    if (command.form == Form::Test)
        return ok();
    if (command.form == Form::Read)
        return ok("+CSMP: " + QByteArray::number(profile.firstOctet) + ',' + profile.validity +
                  ',' + QByteArray::number(profile.protocol) + ',' +
                  QByteArray::number(profile.dataCodingScheme));
    std::vector<AtArgument> arguments = splitArguments(command.arguments);
    if (command.form != Form::Set || arguments.size() > 4)
        return notAllowedError;
    const AtArgument validity = arguments.size() > 1 ? arguments.at(1) : AtArgument();
    std::array<int *, 4> targets{&profile.firstOctet, nullptr, &profile.protocol,
                                 &profile.dataCodingScheme};
    std::array<int, 4> values{-1, -1, -1, -1};
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (i == 1 && validity.quoted)
            continue; // a time rather than a number
        const auto number = numbersOf(arguments.at(i).text);
        if (!number || number->front() > maxOctet)
            return notAllowedError;
        values.at(i) = number->front();
    }
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (targets.at(i) != nullptr && values.at(i) >= 0)
            *targets.at(i) = values.at(i);
    }
    if (!validity.text.isEmpty())
        profile.validity = validity.quoted ? '"' + validity.text + '"' : validity.text;
    return ok();
}

AtAnswer characterSet(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok("+CSCS: " + characterSetList());
    if (command.form == Form::Read)
        return ok("+CSCS: \"" + modem.profile.characterSet + '"');
    const std::vector<AtArgument> arguments = splitArguments(command.arguments);
    if (command.form != Form::Set || arguments.size() != 1 ||
        !isCharacterSet(arguments.front().text))
        return equipmentError(EquipmentFailure::badParameters);
    modem.profile.characterSet = arguments.front().text;
    return ok();
}

AtAnswer openPduPrompt(ModemState &modem, const AtCommand &command)
{
    constexpr int maxPduLength = 164;
    const auto numbers = numbersOf(command.arguments);
    if (!numbers || numbers->size() != 1 || numbers->front() < 1 || numbers->front() > maxPduLength)
        return messageError(MessageFailure::badPduParameter);
    modem.entryLength = numbers->front();
    modem.entryAcknowledges.reset();
    return {{}, Final::Prompt, 0};
}

AtAnswer openTextPrompt(ModemState &modem, const AtCommand &command)
{
    const std::vector<AtArgument> arguments = splitArguments(command.arguments);
    const auto number = numberFromCharacterSet(arguments.front().text, modem.profile.characterSet);
    if (!number || arguments.size() > 2)
        return messageError(MessageFailure::badTextParameter);
    modem.entryAcknowledges.reset();
    const bool plus = number->startsWith(u'+');
    modem.entryAddress = {*number, plus ? Address::internationalType : Address::unknownType};
    if (arguments.size() == 2) {
        const auto type = numbersOf(arguments.at(1).text);
        if (!type || type->front() > 255 || (type->front() >= 0 && type->front() < 128))
            return messageError(MessageFailure::badTextParameter);
        const bool international = type->front() >= 0 && ((type->front() >> 4) & 0x07) == 1;
        if (international && !plus)
            modem.entryAddress.text.prepend(u'+');
        if (type->front() >= 0 && !(plus && !international))
            modem.entryAddress.type = type->front();
    }
    return {{}, Final::Prompt, 0};
}

AtAnswer submit(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    if (const auto locked = lockedMessages(modem))
        return *locked;
    if (command.form != Form::Set)
        return error();
    return modem.profile.textFormat == 1 ? openTextPrompt(modem, command)
                                         : openPduPrompt(modem, command);
}

} // namespace

CommandEntries messageCommands()
{
    return {{"+CSMS", service},      {"+CMGF", format},         {"+CSCA", serviceCentre},
            {"+CMMS", moreMessages}, {"+CSMP", textParameters}, {"+CSDH", showDetails},
            {"+CSCS", characterSet}, {"+CMGS", submit}};
}

} // namespace simulator

} // namespace norvane
