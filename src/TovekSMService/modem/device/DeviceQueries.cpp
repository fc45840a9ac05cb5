#include "TovekSMService/modem/device/DeviceQueries.h"

#include "TovekSMService/modem/codec/AnswerParsers.h"

#include <memory>

namespace norvane {

namespace {

using Question = AtDialogue::Question;
using Lines = AnswerParsers::Lines;

/// A question whose answer lines, none without an OK, go to a function.
template <typename Take>
Question question(const QByteArray &command, int limitMs, Take take,
                  const QList<QByteArray> &prefixes = {})
{
    return {{command, limitMs, prefixes},
            [take](const AtAnswer &answer) {
                take(answer.isOk() ? answer.lines : Lines());
                return ModemResult();
            },
            {},
            true};
}

/// The commands are asked one after the other until one of them has filled the field.
template <typename Read>
QList<Question> untilFilled(QString *field, const QList<QByteArray> &commands, int limitMs,
                            Read read, const QList<QByteArray> &prefixes = {})
{
    QList<Question> questions;
    for (const QByteArray &command : commands) {
        Question next = question(
            command, limitMs, [field, read](const Lines &lines) { *field = read(lines); },
            prefixes);
        next.wanted = [field] { return field->isEmpty(); };
        questions.append(next);
    }
    return questions;
}

QString hardwareVersion(const Lines &lines)
{
    return QString::fromLatin1(AnswerParsers::fields(lines, "^HWVER").value(0));
}

} // namespace

namespace DeviceQueries {

QList<AtDialogue::Question> imei(DeviceDetails *details, const ModemTimings &timings)
{
    return untilFilled(&details->imei, {"AT+CGSN", "AT+GSN"}, timings.commandMs,
                       AnswerParsers::imei);
}

QList<AtDialogue::Question> iccid(QString *iccid, const ModemTimings &timings)
{
    return untilFilled(iccid, {"AT+CCID", "AT+ICCID", "AT^ICCID?"}, timings.commandMs,
                       AnswerParsers::iccid, {"+CCID", "+ICCID", "^ICCID", "^SCID"});
}

QList<AtDialogue::Question> identity(DeviceDetails *details, const ModemTimings &timings)
{
    const int limit = timings.commandMs;
    const auto text = AnswerParsers::freeText;
    return untilFilled(&details->manufacturer, {"AT+CGMI", "AT+GMI"}, limit, text) +
           untilFilled(&details->model, {"AT+CGMM", "AT+GMM"}, limit, text) +
           untilFilled(&details->firmware, {"AT+CGMR", "AT+GMR"}, limit, text) +
           imei(details, timings) +
           untilFilled(&details->hardware, {"AT^HWVER"}, limit, hardwareVersion) +
           iccid(&details->simId, timings);
}

QList<AtDialogue::Question> condition(DeviceDetails *details, const ModemTimings &timings)
{
    namespace P = AnswerParsers;
    const int limit = timings.commandMs;
    const int slow = timings.slowCommandMs;

    struct Network
    {
        QString name;
        int registration = -1;
    };
    const auto network = std::make_shared<Network>();
    const auto take = [details, network](const Lines &lines, QByteArrayView tag) {
        const int state = P::registration(lines, tag);
        if (state >= 0)
            network->registration = state;
        details->networkInfo = P::networkInfo(network->name, network->registration);
    };

    QList<Question> questions = {
        // The long alphanumeric form of the operator's name.
        question("AT+COPS=3,0", slow, [](const Lines &) {}),
        question("AT+COPS?", slow,
                 [network](const Lines &lines) { network->name = P::operatorName(lines); }),
        question("AT+CREG?", limit, [take](const Lines &lines) { take(lines, "+CREG"); }),
        question("AT+CEREG?", limit, [take](const Lines &lines) { take(lines, "+CEREG"); }),
        question("AT+CSQ", limit,
                 [details](const Lines &lines) { details->signal = P::signal(lines); }),
        question("AT+CBC", limit,
                 [details](const Lines &lines) { details->battery = P::battery(lines); }),
        question("AT+CCLK?", limit,
                 [details](const Lines &lines) {
                     details->time = QString::fromLatin1(P::fields(lines, "+CCLK").value(0));
                 }),
        question("AT+CSCA?", slow,
                 [details](const Lines &lines) {
                     details->smsc = QString::fromLatin1(P::fields(lines, "+CSCA").value(0));
                 }),
    };
    // The packet network's registration counts only where the other one has nothing to say.
    questions[3].wanted = [network] { return !P::isRegistered(network->registration); };
    return questions;
}

} // namespace DeviceQueries

} // namespace norvane
