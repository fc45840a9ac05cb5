#pragma once

#include "TovekSMService/modem/at/SerialLine.h"
#include "TovekSMService/modem/codec/AtReader.h"
#include "contract/ErrorCodes.h"

#include <span>

namespace norvane {

/// What to do about a failure.
enum class Treatment {
    Permanent,       ///< of the message: trying again changes nothing
    Temporary,       ///< of the network or the moment: later it may go
    Device,          ///< of the device or the SIM: no message would go
    DeviceOrMessage, ///< of the device, unless it takes others and refuses this one alone
};

/// A failure as the engine reports and treats it.
struct FailureRule
{
    int code = ErrorCode::unknownCode;
    Treatment treatment = Treatment::Temporary;

    bool operator==(const FailureRule &) const = default;
};

/// How the sending of a part can fail.
enum class SendProblem {
    CmsError,         ///< +CMS ERROR
    CmeError,         ///< +CME ERROR
    GenericError,     ///< ERROR, or the device's words for it
    NoPrompt,         ///< the device never asked for the payload: nothing was sent
    LostAnswer,       ///< the payload left, the final result didn't come
    LineBrokenBefore, ///< the line broke before the payload left
    LineBrokenAfter,  ///< the line broke after the payload left
    NotSent,          ///< the device wasn't ready for sending
};

/// Which numbers a row speaks of.
enum class FailureSpace { Cms, Cme, Line, Send };

/// One row of the table: a range of numbers of one space. `Line` counts by LineError, `Send` by
/// SendProblem.
struct FailureRow
{
    FailureSpace space;
    int first;
    int last;
    /// The words of the standard, which a device may send in place of the number.
    const char *name;
    FailureRule rule;
    const char *source;
};

/// The whole table. The first row that holds a number counts; every number of +CMS ERROR and
/// +CME ERROR from 0 on, every line failure and every way of failing to send has one.
std::span<const FailureRow> failureTable();

/// The rule for a number. A number below 0 is one that isn't known.
FailureRule failureRule(FailureSpace space, int number);
FailureRule failureRule(LineError error);
FailureRule failureRule(SendProblem problem);
/// The rule for a final result other than OK, by its number or, without one, by its words.
FailureRule failureRule(const AtResult &result);

/// The number of a +CMS ERROR or +CME ERROR, looked up by its words where the device gives words;
/// -1 if neither is known.
int failureNumber(const AtResult &result);

} // namespace norvane
