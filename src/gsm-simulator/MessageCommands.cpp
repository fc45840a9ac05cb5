#include "gsm-simulator/CommandTable.h"
#include "gsm-simulator/TextCoding.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

const AtAnswer notAllowedError = messageError(MessageFailure::notAllowed);

/// Why the SIM keeps the messages to itself, or nothing.
std::optional<AtAnswer> lockedAnswer(const ModemState &modem)
{
    if (!modem.hasSim())
        return messageError(MessageFailure::simFailure);
    switch (modem.sim.state()) {
    case SimCard::State::Ready:
        return std::nullopt;
    case SimCard::State::PinNeeded:
        return messageError(MessageFailure::pinRequired);
    case SimCard::State::PukNeeded:
        return messageError(MessageFailure::pukRequired);
    default:
        return messageError(MessageFailure::simFailure);
    }
}

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
    if (const auto locked = lockedAnswer(modem))
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

AtAnswer indications(ModemState &modem, const AtCommand &command)
{
    static constexpr std::array<int, 5> max{3, 3, 3, 2, 1};
    std::array<int, 5> &values = modem.profile.indications;
    if (command.form == Form::Test)
        return ok("+CNMI: (0-3),(0-3),(0-3),(0-2),(0,1)");
    if (command.form == Form::Read) {
        QByteArrayList texts;
        for (const int value : values)
            texts += QByteArray::number(value);
        return ok("+CNMI: " + texts.join(','));
    }
    const auto given = numbersOf(command.arguments);
    if (command.form != Form::Set || !given || given->size() > values.size())
        return notAllowedError;
    for (std::size_t i = 0; i < given->size(); ++i) {
        if (given->at(i) > max.at(i))
            return notAllowedError;
    }
    for (std::size_t i = 0; i < given->size(); ++i) {
        if (given->at(i) >= 0)
            values.at(i) = given->at(i);
    }
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

AtAnswer memories(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok("+CPMS: (\"SM\",\"ME\"),(\"SM\",\"ME\"),(\"SM\",\"ME\")");
    if (const auto locked = lockedAnswer(modem))
        return *locked;
    std::array<QByteArray, 3> &names = modem.profile.memories;
    if (command.form == Form::Read) {
        QByteArrayList texts;
        for (const QByteArray &name : names)
            texts += '"' + name + "\",0,20";
        return ok("+CPMS: " + texts.join(','));
    }
    const std::vector<AtArgument> given = splitArguments(command.arguments);
    const bool known = std::all_of(given.begin(), given.end(), [](const AtArgument &argument) {
        return argument.text == "SM" || argument.text == "ME";
    });
    if (command.form != Form::Set || given.size() > names.size() || !known)
        return notAllowedError;
    for (std::size_t i = 0; i < given.size(); ++i)
        names.at(i) = given.at(i).text;
    return ok("+CPMS: 0,20,0,20,0,20");
}

/// No message is ever received, so that every list is empty.
AtAnswer listMessages(ModemState &modem, const AtCommand &command)
{
    static const QByteArrayList states{"REC UNREAD", "REC READ", "STO UNSENT", "STO SENT", "ALL"};
    const bool text = modem.profile.textFormat == 1;
    if (command.form == Form::Test)
        return ok(text ? "+CMGL: (\"" + states.join("\",\"") + "\")" : "+CMGL: (0-4)"_ba);
    if (const auto locked = lockedAnswer(modem))
        return *locked;
    if (command.form == Form::Execute)
        return ok();
    const QByteArray state = splitArguments(command.arguments).front().text;
    const bool known = text ? states.contains(state)
                            : state.size() == 1 && state.at(0) >= '0' && state.at(0) <= '4';
    return command.form == Form::Set && known ? ok() : notAllowedError;
}

AtAnswer readMessage(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    if (const auto locked = lockedAnswer(modem))
        return *locked;
    return command.form == Form::Set ? messageError(MessageFailure::badIndex) : error();
}

/// Deletes one place (which is empty already), or all of a kind by the second argument.
AtAnswer deleteMessage(ModemState &modem, const AtCommand &command)
{
    constexpr int places = 20;
    constexpr int maxKind = 4;
    if (command.form == Form::Test)
        return ok("+CMGD: (1-20),(0-4)");
    if (const auto locked = lockedAnswer(modem))
        return *locked;
    const auto numbers = numbersOf(command.arguments);
    if (command.form != Form::Set || !numbers || numbers->size() > 2)
        return error();
    const int kind = numbers->size() == 2 ? numbers->back() : 0;
    if (kind > maxKind)
        return notAllowedError;
    if (kind <= 0 && (numbers->front() < 1 || numbers->front() > places))
        return messageError(MessageFailure::badIndex);
    return ok();
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
    return {{}, Final::Prompt, 0};
}

AtAnswer openTextPrompt(ModemState &modem, const AtCommand &command)
{
    const std::vector<AtArgument> arguments = splitArguments(command.arguments);
    const auto number = numberFromCharacterSet(arguments.front().text, modem.profile.characterSet);
    if (!number || arguments.size() > 2)
        return messageError(MessageFailure::badTextParameter);
    modem.entryNumber = *number;
    if (arguments.size() == 2) {
        const auto type = numbersOf(arguments.at(1).text);
        if (!type || type->front() > 255 || (type->front() >= 0 && type->front() < 128))
            return messageError(MessageFailure::badTextParameter);
        const bool international = type->front() >= 0 && ((type->front() >> 4) & 0x07) == 1;
        if (international && !number->startsWith(u'+'))
            modem.entryNumber.prepend(u'+');
    }
    return {{}, Final::Prompt, 0};
}

AtAnswer submit(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    if (const auto locked = lockedAnswer(modem))
        return *locked;
    if (command.form != Form::Set)
        return error();
    return modem.profile.textFormat == 1 ? openTextPrompt(modem, command)
                                         : openPduPrompt(modem, command);
}

} // namespace

CommandEntries messageCommands()
{
    return {{"+CSMS", service},        {"+CMGF", format},       {"+CSCA", serviceCentre},
            {"+CNMI", indications},    {"+CMMS", moreMessages}, {"+CPMS", memories},
            {"+CMGL", listMessages},   {"+CMGR", readMessage},  {"+CMGD", deleteMessage},
            {"+CSMP", textParameters}, {"+CSDH", showDetails},  {"+CSCS", characterSet},
            {"+CMGS", submit}};
}

} // namespace simulator

} // namespace norvane
