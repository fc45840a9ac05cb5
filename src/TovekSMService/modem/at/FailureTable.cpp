#include "TovekSMService/modem/at/FailureTable.h"

#include "contract/ErrorCodes.h"

#include <algorithm>
#include <array>

namespace {

constexpr auto s_permanent = Treatment::Permanent;
constexpr auto s_temporary = Treatment::Temporary;
constexpr auto s_device = Treatment::Device;
constexpr auto s_either = Treatment::DeviceOrMessage;
constexpr auto s_cms = FailureSpace::Cms;
constexpr auto s_cme = FailureSpace::Cme;
constexpr auto s_line = FailureSpace::Line;
constexpr auto s_send = FailureSpace::Send;

constexpr int s_top = 0x7FFFFFFF;

constexpr char s_rp[] = "3GPP TS 24.011, 8.2.5.4 table 8.4 and Annex E-2";
constexpr char s_tp[] = "3GPP TS 23.040, 9.2.3.22";
constexpr char s_sms[] = "3GPP TS 27.005, 3.2.5";
constexpr char s_me[] = "3GPP TS 27.007, 9.2";
constexpr char s_failed[] = "3GPP TS 27.005, 3.5.1 and 4.3";
constexpr char s_own[] = "the engine's own";

constexpr int line(LineError error)
{
    return static_cast<int>(error);
}

constexpr int send(SendProblem problem)
{
    return static_cast<int>(problem);
}

// clang-format off
constexpr FailureRow s_rows[] = {
    // What the network's relay answered.
    {s_cms, 1, 1, "unassigned (unallocated) number", {ErrorCode::NetworkRp, s_permanent}, s_rp},
    {s_cms, 8, 8, "operator determined barring", {ErrorCode::CallBarred, s_permanent}, s_rp},
    {s_cms, 10, 10, "call barred", {ErrorCode::CallBarred, s_permanent}, s_rp},
    {s_cms, 17, 17, "network failure", {ErrorCode::NetworkRp, s_temporary}, s_rp},
    {s_cms, 21, 21, "short message transfer rejected", {ErrorCode::NetworkRp, s_temporary}, s_rp},
    {s_cms, 22, 22, "memory capacity exceeded", {ErrorCode::NetworkRp, s_temporary}, s_rp},
    {s_cms, 27, 27, "destination out of order", {ErrorCode::NetworkRp, s_temporary}, s_rp},
    {s_cms, 28, 28, "unidentified subscriber", {ErrorCode::NetworkRp, s_permanent}, s_rp},
    {s_cms, 29, 29, "facility rejected", {ErrorCode::NetworkRp, s_permanent}, s_rp},
    {s_cms, 30, 30, "unknown subscriber", {ErrorCode::NetworkRp, s_permanent}, s_rp},
    {s_cms, 38, 38, "network out of order", {ErrorCode::NetworkRp, s_temporary}, s_rp},
    {s_cms, 41, 41, "temporary failure", {ErrorCode::NetworkRp, s_temporary}, s_rp},
    {s_cms, 42, 42, "congestion", {ErrorCode::NetworkRp, s_temporary}, s_rp},
    {s_cms, 47, 47, "resources unavailable, unspecified", {ErrorCode::NetworkRp, s_temporary}, s_rp},
    {s_cms, 50, 50, "requested facility not subscribed", {ErrorCode::NetworkRp, s_permanent}, s_rp},
    {s_cms, 69, 69, "requested facility not implemented", {ErrorCode::NetworkRp, s_permanent}, s_rp},
    {s_cms, 81, 81, "invalid short message transfer reference value", {ErrorCode::NetworkRp, s_temporary}, s_rp},
    {s_cms, 95, 95, "semantically incorrect message", {ErrorCode::NetworkRp, s_permanent}, s_rp},
    {s_cms, 96, 96, "invalid mandatory information", {ErrorCode::NetworkRp, s_permanent}, s_rp},
    {s_cms, 97, 97, "message type non-existent or not implemented", {ErrorCode::NetworkRp, s_permanent}, s_rp},
    {s_cms, 98, 98, "message not compatible with short message protocol state", {ErrorCode::NetworkRp, s_temporary}, s_rp},
    {s_cms, 99, 99, "information element non-existent or not implemented", {ErrorCode::NetworkRp, s_permanent}, s_rp},
    {s_cms, 111, 111, "protocol error, unspecified", {ErrorCode::NetworkRp, s_temporary}, s_rp},
    {s_cms, 127, 127, "interworking, unspecified", {ErrorCode::NetworkRp, s_temporary}, s_rp},
    // Any other cause counts as number 41.
    {s_cms, 0, 127, "", {ErrorCode::NetworkRp, s_temporary}, s_rp},

    // What the service centre answered.
    {s_cms, 128, 128, "telematic interworking not supported", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 129, 129, "short message type 0 not supported", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 130, 130, "cannot replace short message", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 143, 143, "unspecified TP-PID error", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 144, 144, "data coding scheme (alphabet) not supported", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 145, 145, "message class not supported", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 159, 159, "unspecified TP-DCS error", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 160, 160, "command cannot be actioned", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 161, 161, "command unsupported", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 175, 175, "unspecified TP-command error", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 176, 176, "TPDU not supported", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 192, 192, "SC busy", {ErrorCode::NetworkTp, s_temporary}, s_tp},
    {s_cms, 193, 193, "no SC subscription", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 194, 194, "SC system failure", {ErrorCode::NetworkTp, s_temporary}, s_tp},
    {s_cms, 195, 195, "invalid SME address", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 196, 196, "destination SME barred", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 197, 197, "SM rejected-duplicate SM", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 198, 198, "TP-VPF not supported", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 199, 199, "TP-VP not supported", {ErrorCode::NetworkTp, s_permanent}, s_tp},
    {s_cms, 208, 208, "(U)SIM SMS storage full", {ErrorCode::SmsMemoryFull, s_temporary}, s_tp},
    {s_cms, 209, 209, "no SMS storage capability in (U)SIM", {ErrorCode::NetworkTp, s_temporary}, s_tp},
    {s_cms, 210, 210, "error in MS", {ErrorCode::NetworkTp, s_temporary}, s_tp},
    {s_cms, 211, 211, "memory capacity exceeded", {ErrorCode::SmsMemoryFull, s_temporary}, s_tp},
    {s_cms, 212, 212, "(U)SIM application toolkit busy", {ErrorCode::NetworkTp, s_temporary}, s_tp},
    {s_cms, 213, 213, "(U)SIM data download error", {ErrorCode::NetworkTp, s_temporary}, s_tp},
    {s_cms, 255, 255, "unspecified error cause", {ErrorCode::NetworkTp, s_temporary}, s_tp},
    {s_cms, 128, 255, "", {ErrorCode::NetworkTp, s_temporary}, s_tp},

    // What the device answered to a message command.
    {s_cms, 300, 300, "ME failure", {ErrorCode::Fail, s_either}, s_sms},
    {s_cms, 301, 301, "SMS service of ME reserved", {ErrorCode::SmsService, s_device}, s_sms},
    {s_cms, 302, 302, "operation not allowed", {ErrorCode::SmsService, s_either}, s_sms},
    {s_cms, 303, 303, "operation not supported", {ErrorCode::NotSupported, s_permanent}, s_sms},
    {s_cms, 304, 304, "invalid PDU mode parameter", {ErrorCode::SmsPduParameter, s_permanent}, s_sms},
    {s_cms, 305, 305, "invalid text mode parameter", {ErrorCode::SmsPduParameter, s_either}, s_sms},
    {s_cms, 310, 310, "(U)SIM not inserted", {ErrorCode::SimNotInserted, s_device}, s_sms},
    {s_cms, 310, 310, "SIM not inserted", {ErrorCode::SimNotInserted, s_device}, s_sms},
    {s_cms, 311, 311, "(U)SIM PIN required", {ErrorCode::SimPinRequired, s_device}, s_sms},
    {s_cms, 311, 311, "SIM PIN required", {ErrorCode::SimPinRequired, s_device}, s_sms},
    {s_cms, 312, 312, "PH-(U)SIM PIN required", {ErrorCode::PhoneSecurity, s_device}, s_sms},
    {s_cms, 312, 312, "PH-SIM PIN required", {ErrorCode::PhoneSecurity, s_device}, s_sms},
    {s_cms, 313, 313, "(U)SIM failure", {ErrorCode::SimCommunication, s_device}, s_sms},
    {s_cms, 313, 313, "SIM failure", {ErrorCode::SimCommunication, s_device}, s_sms},
    {s_cms, 314, 314, "(U)SIM busy", {ErrorCode::SimCommunication, s_temporary}, s_sms},
    {s_cms, 314, 314, "SIM busy", {ErrorCode::SimCommunication, s_temporary}, s_sms},
    {s_cms, 315, 315, "(U)SIM wrong", {ErrorCode::SimCommunication, s_device}, s_sms},
    {s_cms, 315, 315, "SIM wrong", {ErrorCode::SimCommunication, s_device}, s_sms},
    {s_cms, 316, 316, "(U)SIM PUK required", {ErrorCode::SimPukRequired, s_device}, s_sms},
    {s_cms, 316, 316, "SIM PUK required", {ErrorCode::SimPukRequired, s_device}, s_sms},
    {s_cms, 317, 317, "(U)SIM PIN2 required", {ErrorCode::SimPin2Required, s_device}, s_sms},
    {s_cms, 317, 317, "SIM PIN2 required", {ErrorCode::SimPin2Required, s_device}, s_sms},
    {s_cms, 318, 318, "(U)SIM PUK2 required", {ErrorCode::SimPuk2Required, s_device}, s_sms},
    {s_cms, 318, 318, "SIM PUK2 required", {ErrorCode::SimPuk2Required, s_device}, s_sms},
    {s_cms, 320, 320, "memory failure", {ErrorCode::MemoryFail, s_either}, s_sms},
    {s_cms, 321, 321, "invalid memory index", {ErrorCode::InvalidIndex, s_permanent}, s_sms},
    {s_cms, 322, 322, "memory full", {ErrorCode::SmsMemoryFull, s_temporary}, s_sms},
    {s_cms, 330, 330, "SMSC address unknown", {ErrorCode::SmscNotFound, s_device}, s_sms},
    // No coverage: a stretch of it must not use up the attempts of a message. (A time-out behind the
    // payload is no failure of the device; the modem tells it as one that may have been delivered.)
    {s_cms, 331, 331, "no network service", {ErrorCode::NetworkService, s_device}, s_sms},
    {s_cms, 332, 332, "network timeout", {ErrorCode::NetworkTimeout, s_device}, s_sms},
    {s_cms, 340, 340, "no +CNMA acknowledgement expected", {ErrorCode::UnexpectedAnswer, s_either}, s_sms},
    {s_cms, 500, 500, "unknown error", {ErrorCode::UnknownCode, s_temporary}, s_sms},
    // Reserved, or the manufacturer's own.
    {s_cms, 256, s_top, "", {ErrorCode::UnknownCode, s_temporary}, s_sms},

    // What the device answered to any other command, or to a message command by mistake.
    {s_cme, 0, 0, "phone failure", {ErrorCode::Fail, s_either}, s_me},
    {s_cme, 1, 1, "no connection to phone", {ErrorCode::PhoneInit, s_device}, s_me},
    {s_cme, 2, 2, "phone-adaptor link reserved", {ErrorCode::PhoneBusy, s_device}, s_me},
    {s_cme, 3, 3, "operation not allowed", {ErrorCode::SmsService, s_either}, s_me},
    {s_cme, 4, 4, "operation not supported", {ErrorCode::NotSupported, s_permanent}, s_me},
    {s_cme, 5, 5, "PH-SIM PIN required", {ErrorCode::PhoneSecurity, s_device}, s_me},
    {s_cme, 6, 6, "PH-FSIM PIN required", {ErrorCode::PhoneSecurity, s_device}, s_me},
    {s_cme, 7, 7, "PH-FSIM PUK required", {ErrorCode::PhoneSecurity, s_device}, s_me},
    {s_cme, 10, 10, "SIM not inserted", {ErrorCode::SimNotInserted, s_device}, s_me},
    {s_cme, 11, 11, "SIM PIN required", {ErrorCode::SimPinRequired, s_device}, s_me},
    {s_cme, 12, 12, "SIM PUK required", {ErrorCode::SimPukRequired, s_device}, s_me},
    {s_cme, 13, 13, "SIM failure", {ErrorCode::SimCommunication, s_device}, s_me},
    {s_cme, 14, 14, "SIM busy", {ErrorCode::SimCommunication, s_temporary}, s_me},
    {s_cme, 15, 15, "SIM wrong", {ErrorCode::SimCommunication, s_device}, s_me},
    {s_cme, 16, 16, "incorrect password", {ErrorCode::IncorrectPassword, s_device}, s_me},
    {s_cme, 17, 17, "SIM PIN2 required", {ErrorCode::SimPin2Required, s_device}, s_me},
    {s_cme, 18, 18, "SIM PUK2 required", {ErrorCode::SimPuk2Required, s_device}, s_me},
    {s_cme, 20, 20, "memory full", {ErrorCode::MemoryFull, s_temporary}, s_me},
    {s_cme, 21, 21, "invalid index", {ErrorCode::InvalidIndex, s_permanent}, s_me},
    {s_cme, 22, 22, "not found", {ErrorCode::LocationEmpty, s_permanent}, s_me},
    {s_cme, 23, 23, "memory failure", {ErrorCode::MemoryFail, s_either}, s_me},
    {s_cme, 24, 24, "text string too long", {ErrorCode::TextTooLong, s_permanent}, s_me},
    {s_cme, 25, 25, "invalid characters in text string", {ErrorCode::InvalidCharacters, s_permanent}, s_me},
    {s_cme, 26, 26, "dial string too long", {ErrorCode::NumberTooLong, s_permanent}, s_me},
    {s_cme, 27, 27, "invalid characters in dial string", {ErrorCode::InvalidCharacters, s_permanent}, s_me},
    {s_cme, 30, 30, "no network service", {ErrorCode::NetworkService, s_device}, s_me},
    {s_cme, 31, 31, "network timeout", {ErrorCode::NetworkTimeout, s_device}, s_me},
    {s_cme, 32, 32, "network not allowed - emergency calls only", {ErrorCode::NetworkService, s_device}, s_me},
    {s_cme, 40, 40, "network personalization PIN required", {ErrorCode::PhoneSecurity, s_device}, s_me},
    {s_cme, 41, 41, "network personalization PUK required", {ErrorCode::PhoneSecurity, s_device}, s_me},
    {s_cme, 42, 42, "network subset personalization PIN required", {ErrorCode::PhoneSecurity, s_device}, s_me},
    {s_cme, 43, 43, "network subset personalization PUK required", {ErrorCode::PhoneSecurity, s_device}, s_me},
    {s_cme, 44, 44, "service provider personalization PIN required", {ErrorCode::PhoneSecurity, s_device}, s_me},
    {s_cme, 45, 45, "service provider personalization PUK required", {ErrorCode::PhoneSecurity, s_device}, s_me},
    {s_cme, 46, 46, "corporate personalization PIN required", {ErrorCode::PhoneSecurity, s_device}, s_me},
    {s_cme, 47, 47, "corporate personalization PUK required", {ErrorCode::PhoneSecurity, s_device}, s_me},
    {s_cme, 48, 48, "hidden key required", {ErrorCode::PhoneSecurity, s_device}, s_me},
    {s_cme, 50, 50, "incorrect parameters", {ErrorCode::MethodParam, s_permanent}, s_me},
    {s_cme, 100, 100, "unknown", {ErrorCode::UnknownCode, s_temporary}, s_me},
    {s_cme, 103, 103, "illegal MS", {ErrorCode::NetworkService, s_device}, s_me},
    {s_cme, 106, 106, "illegal ME", {ErrorCode::NetworkService, s_device}, s_me},
    {s_cme, 111, 111, "PLMN not allowed", {ErrorCode::NetworkService, s_temporary}, s_me},
    {s_cme, 112, 112, "location area not allowed", {ErrorCode::NetworkService, s_temporary}, s_me},
    {s_cme, 113, 113, "roaming not allowed in this location area", {ErrorCode::NetworkService, s_temporary}, s_me},
    {s_cme, 0, s_top, "", {ErrorCode::UnknownCode, s_temporary}, s_me},

    {s_line, line(LineError::NoSuchDevice), line(LineError::NoSuchDevice), "no such device", {ErrorCode::PortNotFound, s_device}, s_own},
    {s_line, line(LineError::NotSerial), line(LineError::NotSerial), "not a serial device", {ErrorCode::PortProperty, s_device}, s_own},
    {s_line, line(LineError::HeldByAnother), line(LineError::HeldByAnother), "held by another program", {ErrorCode::PortOpened, s_device}, s_own},
    {s_line, line(LineError::NotPermitted), line(LineError::NotPermitted), "no permission to open the device", {ErrorCode::PortClosed, s_device}, s_own},
    {s_line, line(LineError::UnsupportedSpeed), line(LineError::UnsupportedSpeed), "unsupported speed", {ErrorCode::PortProperty, s_device}, s_own},
    {s_line, line(LineError::Unplugged), line(LineError::Unplugged), "the device has gone", {ErrorCode::PortClosed, s_device}, s_own},
    {s_line, line(LineError::ReadFailed), line(LineError::ReadFailed), "reading failed", {ErrorCode::PortRead, s_device}, s_own},
    {s_line, line(LineError::WriteFailed), line(LineError::WriteFailed), "writing failed", {ErrorCode::PortWrite, s_device}, s_own},
    {s_line, line(LineError::NotOpen), line(LineError::NotOpen), "the line isn't open", {ErrorCode::PortClosed, s_device}, s_own},
    {s_line, line(LineError::Other), line(LineError::Other), "the line failed", {ErrorCode::PortClosed, s_device}, s_own},

    // An error result says that sending has failed; what the reason was, this one keeps for itself.
    {s_send, send(SendProblem::GenericError), send(SendProblem::GenericError), "error without a reason", {ErrorCode::UnknownCode, s_temporary}, s_failed},
    {s_send, send(SendProblem::NoPrompt), send(SendProblem::NoPrompt), "no prompt for the message", {ErrorCode::NoRespond, s_device}, s_own},
    // Never again by itself: the network may have it.
    {s_send, send(SendProblem::LostAnswer), send(SendProblem::LostAnswer), "no answer after the message left", {ErrorCode::NoRespond, s_permanent}, s_own},
    {s_send, send(SendProblem::LineBrokenBefore), send(SendProblem::LineBrokenBefore), "the line broke before the message left", {ErrorCode::PortClosed, s_device}, s_own},
    {s_send, send(SendProblem::LineBrokenAfter), send(SendProblem::LineBrokenAfter), "the line broke after the message left", {ErrorCode::NoRespond, s_permanent}, s_own},
    {s_send, send(SendProblem::NotSent), send(SendProblem::NotSent), "the device isn't ready", {ErrorCode::PortClosed, s_device}, s_own},
    {s_send, send(SendProblem::CmsError), send(SendProblem::CmeError), "error in unknown words", {ErrorCode::UnknownCode, s_temporary}, s_own},
};
// clang-format on

const FailureRow *rowOf(FailureSpace space, int number)
{
    const auto found = std::find_if(std::begin(s_rows), std::end(s_rows), [=](const auto &row) {
        return row.space == space && number >= row.first && number <= row.last;
    });
    return found == std::end(s_rows) ? nullptr : found;
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
    return s_rows;
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
        return {ErrorCode::NotSupported, Treatment::DeviceOrMessage};
    return failureRule(SendProblem::GenericError);
}

int failureNumber(const AtResult &result)
{
    const std::optional<FailureSpace> space = spaceOf(result);
    if (!space || result.number >= 0)
        return space ? result.number : -1;
    const QByteArray words = result.text.trimmed();
    for (const FailureRow &row : s_rows)
        if (row.space == *space && *row.name != '\0' &&
            words.compare(row.name, Qt::CaseInsensitive) == 0)
            return row.first;
    return -1;
}
