#include "TovekSMService/modem/manager/ManagerFailures.h"

#include "TovekSMService/modem/manager/ManagerNames.h"
#include "contract/ErrorCodes.h"

#include <algorithm>
#include <array>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

struct NamedNumber
{
    QLatin1StringView name;
    int number;
};

constexpr std::array messageErrors = {
    NamedNumber{"MeFailure"_L1, 300},
    NamedNumber{"SmsServiceReserved"_L1, 301},
    NamedNumber{"NotAllowed"_L1, 302},
    NamedNumber{"NotSupported"_L1, 303},
    NamedNumber{"InvalidPduParameter"_L1, 304},
    NamedNumber{"InvalidTextParameter"_L1, 305},
    NamedNumber{"SimNotInserted"_L1, 310},
    NamedNumber{"SimPin"_L1, 311},
    NamedNumber{"PhSimPin"_L1, 312},
    NamedNumber{"SimFailure"_L1, 313},
    NamedNumber{"SimBusy"_L1, 314},
    NamedNumber{"SimWrong"_L1, 315},
    NamedNumber{"SimPuk"_L1, 316},
    NamedNumber{"SimPin2"_L1, 317},
    NamedNumber{"SimPuk2"_L1, 318},
    NamedNumber{"MemoryFailure"_L1, 320},
    NamedNumber{"InvalidIndex"_L1, 321},
    NamedNumber{"MemoryFull"_L1, 322},
    NamedNumber{"SmscAddressUnknown"_L1, 330},
    NamedNumber{"NoNetwork"_L1, 331},
    NamedNumber{"NetworkTimeout"_L1, 332},
    NamedNumber{"NoCnmaAckExpected"_L1, 340},
};

constexpr std::array equipmentErrors = {
    NamedNumber{"PhoneFailure"_L1, 0},
    NamedNumber{"NoConnection"_L1, 1},
    NamedNumber{"LinkReserved"_L1, 2},
    NamedNumber{"NotAllowed"_L1, 3},
    NamedNumber{"NotSupported"_L1, 4},
    NamedNumber{"PhSimPin"_L1, 5},
    NamedNumber{"PhFsimPin"_L1, 6},
    NamedNumber{"PhFsimPuk"_L1, 7},
    NamedNumber{"SimNotInserted"_L1, 10},
    NamedNumber{"SimPin"_L1, 11},
    NamedNumber{"SimPuk"_L1, 12},
    NamedNumber{"SimFailure"_L1, 13},
    NamedNumber{"SimBusy"_L1, 14},
    NamedNumber{"SimWrong"_L1, 15},
    NamedNumber{"IncorrectPassword"_L1, 16},
    NamedNumber{"SimPin2"_L1, 17},
    NamedNumber{"SimPuk2"_L1, 18},
    NamedNumber{"MemoryFull"_L1, 20},
    NamedNumber{"InvalidIndex"_L1, 21},
    NamedNumber{"NotFound"_L1, 22},
    NamedNumber{"MemoryFailure"_L1, 23},
    NamedNumber{"TextTooLong"_L1, 24},
    NamedNumber{"InvalidChars"_L1, 25},
    NamedNumber{"DialStringTooLong"_L1, 26},
    NamedNumber{"DialStringInvalid"_L1, 27},
    NamedNumber{"NoNetwork"_L1, 30},
    NamedNumber{"NetworkTimeout"_L1, 31},
    NamedNumber{"NetworkNotAllowed"_L1, 32},
    NamedNumber{"NetworkPin"_L1, 40},
    NamedNumber{"NetworkPuk"_L1, 41},
    NamedNumber{"NetworkSubsetPin"_L1, 42},
    NamedNumber{"NetworkSubsetPuk"_L1, 43},
    NamedNumber{"ServicePin"_L1, 44},
    NamedNumber{"ServicePuk"_L1, 45},
    NamedNumber{"CorpPin"_L1, 46},
    NamedNumber{"CorpPuk"_L1, 47},
    NamedNumber{"HiddenKeyRequired"_L1, 48},
    NamedNumber{"IncorrectParameters"_L1, 50},
    NamedNumber{"Unknown"_L1, 100},
    NamedNumber{"IllegalUe"_L1, 103},
    NamedNumber{"IllegalMe"_L1, 106},
    NamedNumber{"PlmnNotAllowed"_L1, 111},
    NamedNumber{"AreaNotAllowed"_L1, 112},
    NamedNumber{"RoamingNotAllowedInArea"_L1, 113},
};

/// Errors that have a name we don't know count as these.
constexpr int unknownMessageError = 500;
constexpr int unknownEquipmentError = 100;

/// "Unknown message error: 38".
int numberInText(const QString &text)
{
    bool isNumber = false;
    const int number = text.section(u':', -1).trimmed().toInt(&isNumber);
    return isNumber && number >= 0 ? number : unknownMessageError;
}

template <typename Table>
int lookUp(const Table &table, QStringView name, int otherwise)
{
    const auto found = std::find_if(table.begin(), table.end(),
                                    [name](const NamedNumber &row) { return row.name == name; });
    return found == table.end() ? otherwise : found->number;
}

/// "Error.Core.WrongState: modem not enabled yet".
QString textOf(const QDBusMessage &error)
{
    QString name = error.errorName();
    for (const auto prefix : {Manager::errors, "org.freedesktop.DBus.Error."_L1})
        if (name.startsWith(prefix))
            name.remove(0, prefix.size());
    return error.errorMessage().isEmpty() ? name : u"%1: %2"_s.arg(name, error.errorMessage());
}

/// There is no manager, nor can one be started.
bool isUnstartable(const QString &name)
{
    return name.startsWith("org.freedesktop.DBus.Error.Spawn."_L1) ||
           name.startsWith("org.freedesktop.systemd1."_L1);
}

/// There is nobody who could have taken the call.
bool isUndelivered(const QString &name)
{
    static constexpr std::array names = {
        "org.freedesktop.DBus.Error.ServiceUnknown"_L1,
        "org.freedesktop.DBus.Error.NameHasNoOwner"_L1,
        "org.freedesktop.DBus.Error.UnknownObject"_L1,
        "org.freedesktop.DBus.Error.UnknownInterface"_L1,
        "org.freedesktop.DBus.Error.UnknownMethod"_L1,
        "org.freedesktop.DBus.Error.AccessDenied"_L1,
        "org.freedesktop.DBus.Error.InvalidArgs"_L1,
    };
    return std::find(names.begin(), names.end(), name) != names.end() || isUnstartable(name);
}

template <std::size_t size>
bool isOneOf(const std::array<QLatin1StringView, size> &errors, const QString &name)
{
    return std::any_of(errors.begin(), errors.end(), [&name](QLatin1StringView error) {
        return name == Manager::errors + error;
    });
}

/// The manager refused before it turned to the device.
bool isRefusal(const QString &name)
{
    static constexpr std::array refusals = {"Core.Unauthorized"_L1, "Core.WrongState"_L1,
                                            "Core.WrongSimState"_L1, "Core.InvalidArgs"_L1};
    return isOneOf(refusals, name);
}

/// The port was not there any more when the manager turned to it: for the first part, or for one
/// behind it.
bool isPortLost(const QString &name)
{
    static constexpr std::array losses = {"Core.Connected"_L1, "Core.NotFound"_L1,
                                          "Serial.NotOpen"_L1, "Serial.OpenFailed"_L1,
                                          "Serial.OpenFailedNoDevice"_L1};
    return isOneOf(losses, name);
}

SendFailure failureOf(SendProblem problem, int number, const QDBusMessage &error,
                      const FailureRule &rule)
{
    return {problem, number, textOf(error), rule, false};
}

/// What the network or the device answered.
SendFailure answerOf(const ManagerFailures::Number &number, const QDBusMessage &error)
{
    const bool isCms = number.space == FailureSpace::Cms;
    SendFailure failure = failureOf(isCms ? SendProblem::CmsError : SendProblem::CmeError,
                                    number.number, error, failureRule(number.space, number.number));
    // The device gave up waiting for the network, which may have taken the message all the same.
    failure.mayBeDelivered = failure.rule.code == ErrorCode::networkTimeout;
    return failure;
}

SendFailure inDoubt(const QDBusMessage &error)
{
    SendFailure failure =
        failureOf(SendProblem::LostAnswer, -1, error, failureRule(SendProblem::LostAnswer));
    failure.mayBeDelivered = true;
    return failure;
}

} // namespace

ManagerFailures::Number ManagerFailures::numberOf(const QDBusMessage &error)
{
    const QString name = error.errorName();
    if (!name.startsWith(Manager::errors))
        return {};
    const QStringView rest = QStringView(name).sliced(Manager::errors.size());
    if (rest == "Message.Unknown"_L1)
        return {FailureSpace::Cms, numberInText(error.errorMessage())};
    if (rest.startsWith("Message."_L1))
        return {FailureSpace::Cms, lookUp(messageErrors, rest.sliced(8), unknownMessageError)};
    if (rest.startsWith("MobileEquipment."_L1))
        return {FailureSpace::Cme, lookUp(equipmentErrors, rest.sliced(16), unknownEquipmentError)};
    return {};
}

bool ManagerFailures::isDenied(const QDBusMessage &reply)
{
    const QString name = reply.errorName();
    return name == "org.freedesktop.DBus.Error.AccessDenied"_L1 ||
           name == Manager::errors + "Core.Unauthorized"_L1 ||
           reply.errorMessage().contains("PolicyKit"_L1);
}

ModemFailure ManagerFailures::ofDevice(const QDBusMessage &error)
{
    const QString name = error.errorName();
    if (const Number number = numberOf(error); number.isKnown())
        return {failureRule(number.space, number.number).code, textOf(error), false};
    if (name == "org.freedesktop.DBus.Error.ServiceUnknown"_L1 ||
        name == "org.freedesktop.DBus.Error.NameHasNoOwner"_L1 || isUnstartable(name))
        return {ErrorCode::portNotFound,
                u"no modem manager runs on this machine: "_s + textOf(error), false};
    if (isDenied(error))
        return {ErrorCode::portClosed,
                u"the modem manager doesn't let this account use the device: "_s + textOf(error),
                false};
    return {ErrorCode::phoneInit, textOf(error), false};
}

SendFailure ManagerFailures::ofMessage(const QDBusMessage &error, Stage stage, int parts)
{
    const QString name = error.errorName();
    // Of several parts, the first may have left before the port was lost.
    const bool hasStayed = stage == Stage::Creating || isUndelivered(name) || isRefusal(name) ||
                           (parts == 1 && isPortLost(name));
    const Number number = numberOf(error);
    if (number.isKnown() && (hasStayed || parts == 1))
        return answerOf(number, error);
    if (!hasStayed)
        return inDoubt(error);
    if (name == Manager::errors + "Core.InvalidArgs"_L1)
        return failureOf(SendProblem::GenericError, -1, error,
                         {ErrorCode::methodParam, Treatment::Permanent});
    return failureOf(SendProblem::NotSent, -1, error,
                     {ofDevice(error).code, Treatment::DeviceOrMessage});
}

} // namespace norvane
