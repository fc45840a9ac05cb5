#include "TovekSMService/modem/at/FailureTable.h"

#include "contract/ErrorCodes.h"

#include <algorithm>
#include <array>

namespace norvane {

namespace {

constexpr auto permanent = Treatment::Permanent;
constexpr auto temporary = Treatment::Temporary;
constexpr auto device = Treatment::Device;
constexpr auto either = Treatment::DeviceOrMessage;
constexpr auto cms = FailureSpace::Cms;
constexpr auto cme = FailureSpace::Cme;
constexpr auto line = FailureSpace::Line;
constexpr auto send = FailureSpace::Send;

constexpr int top = 0x7FFFFFFF;

constexpr char rp[] = "3GPP TS 24.011, 8.2.5.4 table 8.4 and Annex E-2";
constexpr char tp[] = "3GPP TS 23.040, 9.2.3.22";
constexpr char sms[] = "3GPP TS 27.005, 3.2.5";
constexpr char me[] = "3GPP TS 27.007, 9.2";
constexpr char errorResult[] = "3GPP TS 27.005, 3.5.1 and 4.3";
constexpr char own[] = "the engine's own";

constexpr int lineCode(LineError error)
{
    return static_cast<int>(error);
}

constexpr int sendCode(SendProblem problem)
{
    return static_cast<int>(problem);
}

// clang-format off
constexpr FailureRow rows[] = {
    // What the network's relay answered.
    {cms, 1, 1, "unassigned (unallocated) number", {ErrorCode::networkRp, permanent}, rp},
    {cms, 8, 8, "operator determined barring", {ErrorCode::callBarred, permanent}, rp},
    {cms, 10, 10, "call barred", {ErrorCode::callBarred, permanent}, rp},
    {cms, 17, 17, "network failure", {ErrorCode::networkRp, temporary}, rp},
    {cms, 21, 21, "short message transfer rejected", {ErrorCode::networkRp, temporary}, rp},
    {cms, 22, 22, "memory capacity exceeded", {ErrorCode::networkRp, temporary}, rp},
    {cms, 27, 27, "destination out of order", {ErrorCode::networkRp, temporary}, rp},
    {cms, 28, 28, "unidentified subscriber", {ErrorCode::networkRp, permanent}, rp},
    {cms, 29, 29, "facility rejected", {ErrorCode::networkRp, permanent}, rp},
    {cms, 30, 30, "unknown subscriber", {ErrorCode::networkRp, permanent}, rp},
    {cms, 38, 38, "network out of order", {ErrorCode::networkRp, temporary}, rp},
    {cms, 41, 41, "temporary failure", {ErrorCode::networkRp, temporary}, rp},
    {cms, 42, 42, "congestion", {ErrorCode::networkRp, temporary}, rp},
    {cms, 47, 47, "resources unavailable, unspecified", {ErrorCode::networkRp, temporary}, rp},
    {cms, 50, 50, "requested facility not subscribed", {ErrorCode::networkRp, permanent}, rp},
    {cms, 69, 69, "requested facility not implemented", {ErrorCode::networkRp, permanent}, rp},
    {cms, 81, 81, "invalid short message transfer reference value", {ErrorCode::networkRp, temporary}, rp},
    {cms, 95, 95, "semantically incorrect message", {ErrorCode::networkRp, permanent}, rp},
    {cms, 96, 96, "invalid mandatory information", {ErrorCode::networkRp, permanent}, rp},
    {cms, 97, 97, "message type non-existent or not implemented", {ErrorCode::networkRp, permanent}, rp},
    {cms, 98, 98, "message not compatible with short message protocol state", {ErrorCode::networkRp, temporary}, rp},
    {cms, 99, 99, "information element non-existent or not implemented", {ErrorCode::networkRp, permanent}, rp},
    {cms, 111, 111, "protocol error, unspecified", {ErrorCode::networkRp, temporary}, rp},
    {cms, 127, 127, "interworking, unspecified", {ErrorCode::networkRp, temporary}, rp},
    // Any other cause counts as number 41.
    {cms, 0, 127, "", {ErrorCode::networkRp, temporary}, rp},

    // What the service centre answered.
    {cms, 128, 128, "telematic interworking not supported", {ErrorCode::networkTp, permanent}, tp},
    {cms, 129, 129, "short message type 0 not supported", {ErrorCode::networkTp, permanent}, tp},
    {cms, 130, 130, "cannot replace short message", {ErrorCode::networkTp, permanent}, tp},
    {cms, 143, 143, "unspecified TP-PID error", {ErrorCode::networkTp, permanent}, tp},
    {cms, 144, 144, "data coding scheme (alphabet) not supported", {ErrorCode::networkTp, permanent}, tp},
    {cms, 145, 145, "message class not supported", {ErrorCode::networkTp, permanent}, tp},
    {cms, 159, 159, "unspecified TP-DCS error", {ErrorCode::networkTp, permanent}, tp},
    {cms, 160, 160, "command cannot be actioned", {ErrorCode::networkTp, permanent}, tp},
    {cms, 161, 161, "command unsupported", {ErrorCode::networkTp, permanent}, tp},
    {cms, 175, 175, "unspecified TP-command error", {ErrorCode::networkTp, permanent}, tp},
    {cms, 176, 176, "TPDU not supported", {ErrorCode::networkTp, permanent}, tp},
    {cms, 192, 192, "SC busy", {ErrorCode::networkTp, temporary}, tp},
    {cms, 193, 193, "no SC subscription", {ErrorCode::networkTp, permanent}, tp},
    {cms, 194, 194, "SC system failure", {ErrorCode::networkTp, temporary}, tp},
    {cms, 195, 195, "invalid SME address", {ErrorCode::networkTp, permanent}, tp},
    {cms, 196, 196, "destination SME barred", {ErrorCode::networkTp, permanent}, tp},
    {cms, 197, 197, "SM rejected-duplicate SM", {ErrorCode::networkTp, permanent}, tp},
    {cms, 198, 198, "TP-VPF not supported", {ErrorCode::networkTp, permanent}, tp},
    {cms, 199, 199, "TP-VP not supported", {ErrorCode::networkTp, permanent}, tp},
    {cms, 208, 208, "(U)SIM SMS storage full", {ErrorCode::smsMemoryFull, temporary}, tp},
    {cms, 209, 209, "no SMS storage capability in (U)SIM", {ErrorCode::networkTp, temporary}, tp},
    {cms, 210, 210, "error in MS", {ErrorCode::networkTp, temporary}, tp},
    {cms, 211, 211, "memory capacity exceeded", {ErrorCode::smsMemoryFull, temporary}, tp},
    {cms, 212, 212, "(U)SIM application toolkit busy", {ErrorCode::networkTp, temporary}, tp},
    {cms, 213, 213, "(U)SIM data download error", {ErrorCode::networkTp, temporary}, tp},
    {cms, 255, 255, "unspecified error cause", {ErrorCode::networkTp, temporary}, tp},
    {cms, 128, 255, "", {ErrorCode::networkTp, temporary}, tp},

    // What the device answered to a message command.
    {cms, 300, 300, "ME failure", {ErrorCode::fail, either}, sms},
    {cms, 301, 301, "SMS service of ME reserved", {ErrorCode::smsService, device}, sms},
    {cms, 302, 302, "operation not allowed", {ErrorCode::smsService, either}, sms},
    {cms, 303, 303, "operation not supported", {ErrorCode::notSupported, permanent}, sms},
    {cms, 304, 304, "invalid PDU mode parameter", {ErrorCode::smsPduParameter, permanent}, sms},
    {cms, 305, 305, "invalid text mode parameter", {ErrorCode::smsPduParameter, either}, sms},
    {cms, 310, 310, "(U)SIM not inserted", {ErrorCode::simNotInserted, device}, sms},
    {cms, 310, 310, "SIM not inserted", {ErrorCode::simNotInserted, device}, sms},
    {cms, 311, 311, "(U)SIM PIN required", {ErrorCode::simPinRequired, device}, sms},
    {cms, 311, 311, "SIM PIN required", {ErrorCode::simPinRequired, device}, sms},
    {cms, 312, 312, "PH-(U)SIM PIN required", {ErrorCode::phoneSecurity, device}, sms},
    {cms, 312, 312, "PH-SIM PIN required", {ErrorCode::phoneSecurity, device}, sms},
    {cms, 313, 313, "(U)SIM failure", {ErrorCode::simCommunication, device}, sms},
    {cms, 313, 313, "SIM failure", {ErrorCode::simCommunication, device}, sms},
    {cms, 314, 314, "(U)SIM busy", {ErrorCode::simCommunication, temporary}, sms},
    {cms, 314, 314, "SIM busy", {ErrorCode::simCommunication, temporary}, sms},
    {cms, 315, 315, "(U)SIM wrong", {ErrorCode::simCommunication, device}, sms},
    {cms, 315, 315, "SIM wrong", {ErrorCode::simCommunication, device}, sms},
    {cms, 316, 316, "(U)SIM PUK required", {ErrorCode::simPukRequired, device}, sms},
    {cms, 316, 316, "SIM PUK required", {ErrorCode::simPukRequired, device}, sms},
    {cms, 317, 317, "(U)SIM PIN2 required", {ErrorCode::simPin2Required, device}, sms},
    {cms, 317, 317, "SIM PIN2 required", {ErrorCode::simPin2Required, device}, sms},
    {cms, 318, 318, "(U)SIM PUK2 required", {ErrorCode::simPuk2Required, device}, sms},
    {cms, 318, 318, "SIM PUK2 required", {ErrorCode::simPuk2Required, device}, sms},
    {cms, 320, 320, "memory failure", {ErrorCode::memoryFail, either}, sms},
    {cms, 321, 321, "invalid memory index", {ErrorCode::invalidIndex, permanent}, sms},
    {cms, 322, 322, "memory full", {ErrorCode::smsMemoryFull, temporary}, sms},
    {cms, 330, 330, "SMSC address unknown", {ErrorCode::smscNotFound, device}, sms},
    // No coverage: a stretch of it must not use up the attempts of a message. (A time-out behind the
    // payload is no failure of the device; the modem tells it as one that may have been delivered.)
    {cms, 331, 331, "no network service", {ErrorCode::networkService, device}, sms},
    {cms, 332, 332, "network timeout", {ErrorCode::networkTimeout, device}, sms},
    {cms, 340, 340, "no +CNMA acknowledgement expected", {ErrorCode::unexpectedAnswer, either}, sms},
    {cms, 500, 500, "unknown error", {ErrorCode::unknownCode, temporary}, sms},
    // Reserved, or the manufacturer's own.
    {cms, 256, top, "", {ErrorCode::unknownCode, temporary}, sms},

    // What the device answered to any other command, or to a message command by mistake.
    {cme, 0, 0, "phone failure", {ErrorCode::fail, either}, me},
    {cme, 1, 1, "no connection to phone", {ErrorCode::phoneInit, device}, me},
    {cme, 2, 2, "phone-adaptor link reserved", {ErrorCode::phoneBusy, device}, me},
    {cme, 3, 3, "operation not allowed", {ErrorCode::smsService, either}, me},
    {cme, 4, 4, "operation not supported", {ErrorCode::notSupported, permanent}, me},
    {cme, 5, 5, "PH-SIM PIN required", {ErrorCode::phoneSecurity, device}, me},
    {cme, 6, 6, "PH-FSIM PIN required", {ErrorCode::phoneSecurity, device}, me},
    {cme, 7, 7, "PH-FSIM PUK required", {ErrorCode::phoneSecurity, device}, me},
    {cme, 10, 10, "SIM not inserted", {ErrorCode::simNotInserted, device}, me},
    {cme, 11, 11, "SIM PIN required", {ErrorCode::simPinRequired, device}, me},
    {cme, 12, 12, "SIM PUK required", {ErrorCode::simPukRequired, device}, me},
    {cme, 13, 13, "SIM failure", {ErrorCode::simCommunication, device}, me},
    {cme, 14, 14, "SIM busy", {ErrorCode::simCommunication, temporary}, me},
    {cme, 15, 15, "SIM wrong", {ErrorCode::simCommunication, device}, me},
    {cme, 16, 16, "incorrect password", {ErrorCode::incorrectPassword, device}, me},
    {cme, 17, 17, "SIM PIN2 required", {ErrorCode::simPin2Required, device}, me},
    {cme, 18, 18, "SIM PUK2 required", {ErrorCode::simPuk2Required, device}, me},
    {cme, 20, 20, "memory full", {ErrorCode::memoryFull, temporary}, me},
    {cme, 21, 21, "invalid index", {ErrorCode::invalidIndex, permanent}, me},
    {cme, 22, 22, "not found", {ErrorCode::locationEmpty, permanent}, me},
    {cme, 23, 23, "memory failure", {ErrorCode::memoryFail, either}, me},
    {cme, 24, 24, "text string too long", {ErrorCode::textTooLong, permanent}, me},
    {cme, 25, 25, "invalid characters in text string", {ErrorCode::invalidCharacters, permanent}, me},
    {cme, 26, 26, "dial string too long", {ErrorCode::numberTooLong, permanent}, me},
    {cme, 27, 27, "invalid characters in dial string", {ErrorCode::invalidCharacters, permanent}, me},
    {cme, 30, 30, "no network service", {ErrorCode::networkService, device}, me},
    {cme, 31, 31, "network timeout", {ErrorCode::networkTimeout, device}, me},
    {cme, 32, 32, "network not allowed - emergency calls only", {ErrorCode::networkService, device}, me},
    {cme, 40, 40, "network personalization PIN required", {ErrorCode::phoneSecurity, device}, me},
    {cme, 41, 41, "network personalization PUK required", {ErrorCode::phoneSecurity, device}, me},
    {cme, 42, 42, "network subset personalization PIN required", {ErrorCode::phoneSecurity, device}, me},
    {cme, 43, 43, "network subset personalization PUK required", {ErrorCode::phoneSecurity, device}, me},
    {cme, 44, 44, "service provider personalization PIN required", {ErrorCode::phoneSecurity, device}, me},
    {cme, 45, 45, "service provider personalization PUK required", {ErrorCode::phoneSecurity, device}, me},
    {cme, 46, 46, "corporate personalization PIN required", {ErrorCode::phoneSecurity, device}, me},
    {cme, 47, 47, "corporate personalization PUK required", {ErrorCode::phoneSecurity, device}, me},
    {cme, 48, 48, "hidden key required", {ErrorCode::phoneSecurity, device}, me},
    {cme, 50, 50, "incorrect parameters", {ErrorCode::methodParam, permanent}, me},
    {cme, 100, 100, "unknown", {ErrorCode::unknownCode, temporary}, me},
    {cme, 103, 103, "illegal MS", {ErrorCode::networkService, device}, me},
    {cme, 106, 106, "illegal ME", {ErrorCode::networkService, device}, me},
    {cme, 111, 111, "PLMN not allowed", {ErrorCode::networkService, temporary}, me},
    {cme, 112, 112, "location area not allowed", {ErrorCode::networkService, temporary}, me},
    {cme, 113, 113, "roaming not allowed in this location area", {ErrorCode::networkService, temporary}, me},
    {cme, 0, top, "", {ErrorCode::unknownCode, temporary}, me},

    {line, lineCode(LineError::NoSuchDevice), lineCode(LineError::NoSuchDevice), "no such device", {ErrorCode::portNotFound, device}, own},
    {line, lineCode(LineError::NotSerial), lineCode(LineError::NotSerial), "not a serial device", {ErrorCode::portProperty, device}, own},
    {line, lineCode(LineError::HeldByAnother), lineCode(LineError::HeldByAnother), "held by another program", {ErrorCode::portOpened, device}, own},
    {line, lineCode(LineError::NotPermitted), lineCode(LineError::NotPermitted), "no permission to open the device", {ErrorCode::portClosed, device}, own},
    {line, lineCode(LineError::UnsupportedSpeed), lineCode(LineError::UnsupportedSpeed), "unsupported speed", {ErrorCode::portProperty, device}, own},
    {line, lineCode(LineError::Unplugged), lineCode(LineError::Unplugged), "the device has gone", {ErrorCode::portClosed, device}, own},
    {line, lineCode(LineError::ReadFailed), lineCode(LineError::ReadFailed), "reading failed", {ErrorCode::portRead, device}, own},
    {line, lineCode(LineError::WriteFailed), lineCode(LineError::WriteFailed), "writing failed", {ErrorCode::portWrite, device}, own},
    {line, lineCode(LineError::NotOpen), lineCode(LineError::NotOpen), "the line isn't open", {ErrorCode::portClosed, device}, own},
    {line, lineCode(LineError::Other), lineCode(LineError::Other), "the line failed", {ErrorCode::portClosed, device}, own},

    // An error result says that sending has failed; what the reason was, this one keeps for itself.
    {send, sendCode(SendProblem::GenericError), sendCode(SendProblem::GenericError), "error without a reason", {ErrorCode::unknownCode, temporary}, errorResult},
    {send, sendCode(SendProblem::NoPrompt), sendCode(SendProblem::NoPrompt), "no prompt for the message", {ErrorCode::noRespond, device}, own},
    // Never again by itself: the network may have it.
    {send, sendCode(SendProblem::LostAnswer), sendCode(SendProblem::LostAnswer), "no answer after the message left", {ErrorCode::noRespond, permanent}, own},
    {send, sendCode(SendProblem::LineBrokenBefore), sendCode(SendProblem::LineBrokenBefore), "the line broke before the message left", {ErrorCode::portClosed, device}, own},
    {send, sendCode(SendProblem::LineBrokenAfter), sendCode(SendProblem::LineBrokenAfter), "the line broke after the message left", {ErrorCode::noRespond, permanent}, own},
    {send, sendCode(SendProblem::NotSent), sendCode(SendProblem::NotSent), "the device isn't ready", {ErrorCode::portClosed, device}, own},
    {send, sendCode(SendProblem::CmsError), sendCode(SendProblem::CmeError), "error in unknown words", {ErrorCode::unknownCode, temporary}, own},
};
// clang-format on

const FailureRow *rowOf(FailureSpace space, int number)
{
    const auto found = std::find_if(std::begin(rows), std::end(rows), [=](const auto &row) {
        return row.space == space && number >= row.first && number <= row.last;
    });
    return found == std::end(rows) ? nullptr : found;
}

std::optional<FailureSpace> spaceOf(const AtResult &result)
{
    switch (result.kind) {
    case AtResult::Kind::CmsError:
        return FailureSpace::Cms;
    case AtResult::Kind::CmeError:
        return FailureSpace::Cme;
    default:
        return std::nullopt;
    }
}

} // namespace

std::span<const FailureRow> failureTable()
{
    return rows;
}

FailureRule failureRule(FailureSpace space, int number)
{
    const FailureRow *row = rowOf(space, number);
    return row != nullptr ? row->rule : FailureRule{};
}

FailureRule failureRule(LineError error)
{
    return failureRule(FailureSpace::Line, static_cast<int>(error));
}

FailureRule failureRule(SendProblem problem)
{
    return failureRule(FailureSpace::Send, static_cast<int>(problem));
}

FailureRule failureRule(const AtResult &result)
{
    if (const std::optional<FailureSpace> space = spaceOf(result))
        return failureRule(*space, failureNumber(result));
    if (result.kind == AtResult::Kind::NotSupported)
        return {ErrorCode::notSupported, Treatment::DeviceOrMessage};
    return failureRule(SendProblem::GenericError);
}

int failureNumber(const AtResult &result)
{
    const std::optional<FailureSpace> space = spaceOf(result);
    if (!space || result.number >= 0)
        return space ? result.number : -1;
    const QByteArray words = result.text.trimmed();
    for (const FailureRow &row : rows)
        if (row.space == *space && *row.name != '\0' &&
            words.compare(row.name, Qt::CaseInsensitive) == 0)
            return row.first;
    return -1;
}

} // namespace norvane
