#include "gsm-simulator/ControlCommands.h"

#include "gsm-simulator/AtCommandLine.h"
#include "gsm-simulator/DeliverRequest.h"

#include <optional>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

/// Numbers from 0 on, each with its maximum, or nothing if one isn't.
std::optional<std::vector<int>> numbersIn(const QByteArrayList &words,
                                          std::initializer_list<int> maxima)
{
    if (words.size() != static_cast<qsizetype>(maxima.size()))
        return std::nullopt;
    std::vector<int> numbers;
    for (const int max : maxima) {
        const QByteArray &word = words.at(static_cast<qsizetype>(numbers.size()));
        const auto read = numbersOf(word);
        if (!read || read->size() != 1 || read->front() < 0 || read->front() > max)
            return std::nullopt;
        numbers.push_back(read->front());
    }
    return numbers;
}

const ControlFault fullNetwork{"the network holds too many messages"_ba};

} // namespace

ControlCommands::Outcome ControlCommands::run(const QByteArray &line)
{
    const QByteArray command = line.trimmed();
    const qsizetype space = command.indexOf(' ');
    const QByteArray name = space < 0 ? command : command.left(space);
    const QByteArray arguments = space < 0 ? QByteArray() : command.mid(space + 1).trimmed();
    const Answer answer = answerTo(name, arguments);
    if (const auto *fault = std::get_if<ControlFault>(&answer))
        return {"error " + fault->reason, true, false};
    const QByteArray &values = std::get<QByteArray>(answer);
    return {values.isEmpty() ? "ok"_ba : "ok " + values, false, name == "unplug"};
}

ControlCommands::Answer ControlCommands::answerTo(const QByteArray &name,
                                                  const QByteArray &arguments)
{
    const QByteArrayList words = arguments.isEmpty() ? QByteArrayList() : arguments.split(' ');
    if (name == "deliver")
        return deliver(arguments);
    if (name == "raw")
        return raw(arguments);
    if (name == "report")
        return report(words);
    if (name == "count")
        return count(arguments);
    if (name == "memory")
        return memory(arguments);
    if (name == "registered")
        return setRegistered(words);
    if (name == "signal")
        return setSignal(words);
    if (name == "unplug" && words.isEmpty())
        return QByteArray();
    return ControlFault{"unknown command"_ba};
}

ControlCommands::Answer ControlCommands::deliver(const QByteArray &json)
{
    const QDateTime now = m_modem.settings.clock();
    const auto read = readDeliverRequest(json, now);
    if (const auto *fault = std::get_if<ControlFault>(&read))
        return *fault;
    const auto &request = std::get<DeliverRequest>(read);
    const std::optional<QByteArrayList> tpdus = deliverTpdus(request.message);
    if (!tpdus)
        return ControlFault{"the text doesn't fit its alphabet or its parts"_ba};
    QByteArrayList ordered = request.order.empty() ? *tpdus : QByteArrayList();
    for (const int part : request.order) {
        if (part > tpdus->size())
            return ControlFault{"there are only " + QByteArray::number(tpdus->size()) + " parts"};
        ordered += tpdus->at(part - 1);
    }
    if (m_modem.network.room(ServiceCentre::Messages) < static_cast<std::size_t>(ordered.size()))
        return fullNetwork;
    for (const QByteArray &tpdu : ordered)
        m_modem.network.add(ServiceCentre::Messages, tpdu, now.addMSecs(request.delay.count()));
    return QByteArray::number(ordered.size());
}

ControlCommands::Answer ControlCommands::raw(const QByteArray &hexadecimal)
{
    const std::optional<QByteArray> octets = octetsOfHexadecimal(hexadecimal);
    if (!octets)
        return ControlFault{"hexadecimal digits are needed"_ba};
    const auto read = readReceived(*octets);
    const auto *pdu = std::get_if<ReceivedPdu>(&read);
    if (pdu == nullptr)
        return ControlFault{"neither an SMS-DELIVER nor an SMS-STATUS-REPORT"_ba};
    const auto lane =
        pdu->type == ReceivedPdu::Type::Deliver ? ServiceCentre::Messages : ServiceCentre::Reports;
    if (!m_modem.network.add(lane, *octets, m_modem.settings.clock()))
        return fullNetwork;
    return "1"_ba;
}

ControlCommands::Answer ControlCommands::report(const QByteArrayList &words)
{
    constexpr int maxOctet = 255;
    const auto numbers = numbersIn(words, {maxOctet, maxOctet});
    if (!numbers)
        return ControlFault{"a reference and a status are needed"_ba};
    if (!m_modem.network.report(numbers->front(), numbers->back(), m_modem.settings.clock()))
        return ControlFault{"no message of that reference, or too many reports"_ba};
    return QByteArray();
}

ControlCommands::Answer ControlCommands::count(const QByteArray &what) const
{
    if (what == "sent")
        return QByteArray::number(m_modem.network.acceptedCount());
    if (what == "submitting")
        return QByteArray::number(m_modem.isSubmitting ? 1 : 0);
    if (what == "messages")
        return QByteArray::number(m_modem.waitingCount(ServiceCentre::Messages));
    if (what == "reports")
        return QByteArray::number(m_modem.waitingCount(ServiceCentre::Reports));
    return ControlFault{"sent, submitting, messages or reports can be counted"_ba};
}

ControlCommands::Answer ControlCommands::memory(const QByteArray &name)
{
    const MessageMemory *found = m_modem.memories.find(name);
    if (found == nullptr)
        return ControlFault{"no memory of that name"_ba};
    return QByteArray::number(found->used()) + ' ' + QByteArray::number(found->places());
}

ControlCommands::Answer ControlCommands::setRegistered(const QByteArrayList &words)
{
    const auto numbers = numbersIn(words, {5});
    if (!numbers)
        return ControlFault{"a state from 0 to 5 is needed"_ba};
    m_modem.settings.registered = numbers->front();
    return QByteArray();
}

ControlCommands::Answer ControlCommands::setSignal(const QByteArrayList &words)
{
    constexpr int max = 31;
    constexpr int unknown = 99;
    const auto numbers = numbersIn(words, {unknown});
    if (!numbers || (numbers->front() > max && numbers->front() != unknown))
        return ControlFault{"a quality from 0 to 31, or 99, is needed"_ba};
    m_modem.settings.signal = numbers->front();
    return QByteArray();
}

} // namespace simulator

} // namespace norvane
