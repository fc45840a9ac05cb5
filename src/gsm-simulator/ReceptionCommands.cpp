#include "gsm-simulator/CommandTable.h"
#include "gsm-simulator/MessageLines.h"
#include "gsm-simulator/PduDecoder.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

const AtAnswer notAllowedError = messageError(MessageFailure::notAllowed);

constexpr std::size_t modePlace = 0;
constexpr std::size_t reportPlace = 3;
constexpr std::size_t bufferPlace = 4;

bool takesReportWay(const ReceptionSettings &settings, int way)
{
    return way == 0 || (way == 1 && settings.routesReports) || (way == 2 && settings.storesReports);
}

QByteArray reportWays(const ReceptionSettings &settings)
{
    if (settings.routesReports && settings.storesReports)
        return "0-2"_ba;
    if (settings.routesReports)
        return "0,1"_ba;
    return settings.storesReports ? "0,2"_ba : "0"_ba;
}

AtAnswer setIndications(ModemState &modem, const AtCommand &command)
{
    static constexpr std::array<int, 5> max{3, 3, 3, 2, 1};
    std::array<int, 5> &values = modem.profile.indications;
    const auto given = numbersOf(command.arguments);
    if (command.form != Form::Set || !given || given->size() > values.size())
        return notAllowedError;
    for (std::size_t i = 0; i < given->size(); ++i) {
        if (given->at(i) > max.at(i))
            return notAllowedError;
    }
    if (given->size() > reportPlace && given->at(reportPlace) > 0 &&
        !takesReportWay(modem.settings.reception, given->at(reportPlace)))
        return notAllowedError;
    const bool keptBack = values.at(modePlace) == 0;
    for (std::size_t i = 0; i < given->size(); ++i) {
        if (given->at(i) >= 0)
            values.at(i) = given->at(i);
    }
    if (keptBack && values.at(modePlace) != 0 && values.at(bufferPlace) == 1)
        modem.reception.clearBuffer();
    return ok();
}

AtAnswer indications(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok("+CNMI: (0-3),(0-3),(0-3),(" + reportWays(modem.settings.reception) + "),(0,1)");
    if (command.form != Form::Read)
        return setIndications(modem, command);
    QByteArrayList texts;
    for (const int value : modem.profile.indications)
        texts += QByteArray::number(value);
    return ok("+CNMI: " + texts.join(','));
}

AtAnswer acknowledged(ModemState &modem, Reception::Acknowledgement acknowledgement)
{
    return modem.reception.acknowledge(modem, acknowledgement)
               ? ok()
               : messageError(MessageFailure::noAcknowledgementExpected);
}

/// +CNMA (3GPP TS 27.005, 3.4.4 and 4.6): in PDU mode a number tells the kind, and a length that
/// the acknowledgement has a PDU of its own.
AtAnswer acknowledge(ModemState &modem, const AtCommand &command)
{
    constexpr int negative = 2;
    constexpr int maxPduLength = 164;
    const bool text = modem.profile.textFormat == 1;
    if (command.form == Form::Test)
        return text ? ok() : ok("+CNMA: (0-2)");
    if (const auto locked = lockedMessages(modem))
        return *locked;
    if (command.form == Form::Execute)
        return acknowledged(modem, Reception::Acknowledgement::Positive);
    const auto numbers = numbersOf(command.arguments);
    if (command.form != Form::Set || text || !numbers || numbers->size() > 2 ||
        numbers->front() < 0 || numbers->front() > negative)
        return notAllowedError;
    const auto kind = numbers->front() == negative ? Reception::Acknowledgement::Negative
                                                   : Reception::Acknowledgement::Positive;
    if (numbers->size() == 1)
        return acknowledged(modem, kind);
    if (numbers->front() == 0 || numbers->back() < 1 || numbers->back() > maxPduLength)
        return notAllowedError;
    if (!modem.reception.isAwaiting())
        return messageError(MessageFailure::noAcknowledgementExpected);
    modem.entryLength = numbers->back();
    modem.entryAcknowledges = kind;
    return {{}, Final::Prompt, 0};
}

/// What messages can be read from, or, but for reports, received in.
QByteArrayList memoryNames(const ModemState &modem, bool forReports)
{
    QByteArrayList names;
    for (const MemorySettings &memory : modem.settings.reception.memories) {
        if (forReports || (memory.name != "SR" && memory.name != "BM"))
            names += memory.name;
    }
    return names;
}

QByteArray usage(const MessageMemory &memory)
{
    return QByteArray::number(memory.used()) + ',' + QByteArray::number(memory.places());
}

AtAnswer setMemories(ModemState &modem, const AtCommand &command)
{
    std::array<QByteArray, 3> names = modem.profile.memories;
    const std::vector<AtArgument> given = splitArguments(command.arguments);
    if (command.form != Form::Set || given.size() > names.size())
        return notAllowedError;
    for (std::size_t i = 0; i < given.size(); ++i) {
        if (!memoryNames(modem, i == 0).contains(given.at(i).text))
            return notAllowedError;
        names.at(i) = given.at(i).text;
    }
    modem.profile.memories = names;
    QByteArrayList texts;
    for (const QByteArray &name : names)
        texts += usage(*modem.memories.find(name));
    return ok("+CPMS: " + texts.join(','));
}

AtAnswer memories(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test) {
        const QByteArray all = "(\"" + memoryNames(modem, true).join("\",\"") + "\")";
        const QByteArray some = "(\"" + memoryNames(modem, false).join("\",\"") + "\")";
        return ok("+CPMS: " + all + ',' + some + ',' + some);
    }
    if (const auto locked = lockedMessages(modem))
        return *locked;
    if (command.form != Form::Read)
        return setMemories(modem, command);
    QByteArrayList texts;
    for (const QByteArray &name : modem.profile.memories)
        texts += '"' + name + "\"," + usage(*modem.memories.find(name));
    return ok("+CPMS: " + texts.join(','));
}

MessageMemory &readMemory(ModemState &modem)
{
    return *modem.memories.find(modem.profile.memories.front());
}

/// Tells the messages of a state, which are read by that. None is ever written or sent here.
AtAnswer listMessages(ModemState &modem, const AtCommand &command)
{
    static const QByteArrayList states{"REC UNREAD", "REC READ", "STO UNSENT", "STO SENT", "ALL"};
    enum State { Unread, Read, Unsent, Sent, All };
    const bool text = modem.profile.textFormat == 1;
    if (command.form == Form::Test)
        return ok(text ? "+CMGL: (\"" + states.join("\",\"") + "\")" : "+CMGL: (0-4)"_ba);
    if (const auto locked = lockedMessages(modem))
        return *locked;
    qsizetype state = Unread;
    if (command.form != Form::Execute) {
        const QByteArray given = splitArguments(command.arguments).front().text;
        if (text) {
            state = states.indexOf(given);
        } else {
            state =
                given.size() == 1 && given.at(0) >= '0' && given.at(0) <= '4' ? given.toInt() : -1;
        }
        if (command.form != Form::Set || state < 0)
            return notAllowedError;
    }
    QByteArrayList entries;
    for (auto &[place, message] : readMemory(modem).messages()) {
        if (state != All && state != (message.isRead ? Read : Unread))
            continue;
        entries += listEntry(place, message, modem.profile);
        message.isRead = true;
    }
    return entries.isEmpty() ? ok() : ok(entries.join("\r\n"_ba));
}

AtAnswer readMessage(ModemState &modem, const AtCommand &command)
{
    if (command.form == Form::Test)
        return ok();
    if (const auto locked = lockedMessages(modem))
        return *locked;
    if (command.form != Form::Set)
        return error();
    const auto numbers = numbersOf(command.arguments);
    StoredMessage *message =
        numbers && numbers->size() == 1 ? readMemory(modem).at(numbers->front()) : nullptr;
    if (message == nullptr)
        return messageError(MessageFailure::badIndex);
    const QByteArray entry = readEntry(*message, modem.profile);
    message->isRead = true;
    return ok(entry);
}

/// Deletes one place (which may be empty), or all of a kind by the second argument.
AtAnswer deleteMessage(ModemState &modem, const AtCommand &command)
{
    constexpr int allKinds = 4;
    MessageMemory &memory = readMemory(modem);
    if (command.form == Form::Test)
        return ok("+CMGD: (1-" + QByteArray::number(memory.places()) + "),(0-4)");
    if (const auto locked = lockedMessages(modem))
        return *locked;
    const auto numbers = numbersOf(command.arguments);
    if (command.form != Form::Set || !numbers || numbers->size() > 2)
        return error();
    const int kind = numbers->size() == 2 ? numbers->back() : 0;
    if (kind > allKinds)
        return notAllowedError;
    if (kind <= 0 && (numbers->front() < 1 || numbers->front() > memory.places()))
        return messageError(MessageFailure::badIndex);
    const int before = memory.used();
    if (kind <= 0) {
        memory.remove(numbers->front());
    } else if (kind == allKinds) {
        memory.clear();
    } else {
        memory.removeRead();
    }
    if (memory.used() < before)
        modem.network.memoryAvailable();
    return ok();
}

} // namespace

AtAnswer acknowledgeWithPdu(ModemState &modem, const QByteArray &hexadecimal)
{
    QByteArray digits = hexadecimal;
    if (digits.size() > 1 && digits.startsWith('"') && digits.endsWith('"'))
        digits = digits.mid(1, digits.size() - 2);
    const std::optional<QByteArray> octets = octetsOfHexadecimal(digits);
    if (!octets || octets->size() != modem.entryLength)
        return messageError(MessageFailure::badPduParameter);
    return acknowledged(modem, *modem.entryAcknowledges);
}

CommandEntries receptionCommands()
{
    return {{"+CNMI", indications},  {"+CNMA", acknowledge}, {"+CPMS", memories},
            {"+CMGL", listMessages}, {"+CMGR", readMessage}, {"+CMGD", deleteMessage}};
}

} // namespace simulator

} // namespace norvane
