#include "TovekSMService/modem/device/DeviceSetUp.h"

#include "contract/ErrorCodes.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Question = AtDialogue::Question;

/// A setting whose refusal doesn't matter.
Question preference(const QByteArray &command, const ModemTimings &timings)
{
    return {{command, timings.commandMs, {}}, {}, {}, false};
}

ModemResult takePduMode(const AtAnswer &answer)
{
    if (answer.isOk())
        return {};
    if (answer.end == AtAnswer::End::TimedOut)
        return failed(ModemFailure{ErrorCode::phoneInit, u"no answer to AT+CMGF=0"_s, false});
    const bool reason = failureNumber(answer.result) >= 0;
    return failed(ModemFailure{
        reason ? failureRule(answer.result).code : ErrorCode::notSupported,
        u"the device refuses PDU mode: %1"_s.arg(QString::fromLatin1(answer.result.text)), false});
}

} // namespace

namespace DeviceSetUp {

QList<AtDialogue::Question> dialogue(const ModemTimings &timings)
{
    return {preference("ATE0", timings), preference("ATV1", timings),
            preference("AT+CMEE=1", timings)};
}

QList<AtDialogue::Question> messages(const ModemTimings &timings)
{
    Question pduMode = preference("AT+CMGF=0", timings);
    pduMode.take = takePduMode;
    return {pduMode};
}

} // namespace DeviceSetUp

} // namespace norvane
