#include "TovekSMService/modem/at/FailureTable.h"
#include "TovekSMService/modem/at/PortParameter.h"
#include "TovekSMService/modem/codec/AnswerParsers.h"
#include "TovekSMService/modem/codec/AtReader.h"
#include "TovekSMService/modem/device/SimUnlock.h"

#include "fuzz/FuzzTarget.h"

#include <algorithm>

namespace norvane {

// The lines of one answer, and its final result, as the readers of answers get them.

namespace {

bool isDigits(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
}

void readDetails(const AnswerParsers::Lines &lines)
{
    using namespace AnswerParsers;
    const QString device = imei(lines);
    expectThat(device.isEmpty() || (device.size() >= 14 && device.size() <= 17),
               "an IMEI has 14 to 17 digits");
    expectThat(isDigits(device), "an IMEI has digits only");
    const QString sim = iccid(lines);
    expectThat(sim.isEmpty() || (sim.size() >= 18 && sim.size() <= 22),
               "an ICCID has 18 to 22 places");
    expectThat(signal(lines) >= -1 && signal(lines) <= 100, "signal is a percentage");
    expectThat(battery(lines) >= -1 && battery(lines) <= 100, "battery is a percentage");
    const QString name = operatorName(lines);
    for (const QByteArrayView tag : {"+CREG", "+CEREG"}) {
        const int state = registration(lines, tag);
        expectThat(state >= 0 || !isRegistered(state), "an unknown state is no registration");
        networkInfo(name, state);
    }
    freeText(lines);
}

void readSending(const AnswerParsers::Lines &lines)
{
    using namespace AnswerParsers;
    const std::optional<int> reference = messageReference(lines);
    expectThat(!reference || (*reference >= 0 && *reference <= 255), "a reference is an octet");
    expectThat(pinTries(lines).value_or(0) >= 0, "tries are not negative");
    expectThat(pinState(lines) == pinState(lines).toUpper(), "a PIN state is in upper case");
}

/// A final result as the reader makes it.
std::optional<AtResult> resultOf(const QByteArray &line)
{
    AtReader reader;
    reader.begin("AT+CMGS=23");
    reader.append(line);
    reader.append("\r\n");
    while (const std::optional<AtToken> token = reader.next())
        if (token->kind == AtToken::Kind::Final)
            return token->result;
    return std::nullopt;
}

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    AnswerParsers::Lines lines = input.takeRest().split('\n');
    if (lines.size() > 64)
        lines.resize(64);
    for (QByteArray &line : lines)
        line.truncate(AtReader::maxLine);
    readDetails(lines);
    readSending(lines);

    AtAnswer answer;
    answer.lines = lines;
    for (const QByteArray &line : std::as_const(lines)) {
        const std::optional<AtResult> result = resultOf(line);
        if (result) {
            answer.result = *result;
            expectThat(failureNumber(*result) >= -1, "a failure's number is none or not negative");
            expectThat(failureRule(*result).code < 0, "a failure has the code of a failure");
        }
        simState(answer);
        if (const auto port = parsePortParameter(QString::fromUtf8(line))) {
            expectThat(port->baud > 0, "a speed is above 0");
            expectThat(!port->device.isEmpty(), "a port has a name");
        }
    }
    return 0;
}

} // namespace norvane
