#pragma once

#include "gsm-simulator/AtCommandLine.h"

#include <QByteArray>
#include <QByteArrayList>

#include <initializer_list>

namespace norvane {

namespace simulator {

enum class Final { Ok, Error, EquipmentError, MessageError, NoCarrier, Prompt };

/// Error numbers of 3GPP TS 27.007, 9.2.
namespace EquipmentFailure {
constexpr int notAllowed = 3;
constexpr int notSupported = 4;
constexpr int pinRequired = 11;
constexpr int pukRequired = 12;
constexpr int simFailure = 13;
constexpr int wrongPassword = 16;
constexpr int badParameters = 50;
} // namespace EquipmentFailure

/// Error numbers of 3GPP TS 27.005, 3.2.5.
namespace MessageFailure {
constexpr int notAllowed = 302;
constexpr int notSupported = 303;
constexpr int badPduParameter = 304;
constexpr int badTextParameter = 305;
constexpr int pinRequired = 311;
constexpr int simFailure = 313;
constexpr int pukRequired = 316;
constexpr int badIndex = 321;
constexpr int noNetwork = 331;
constexpr int noAcknowledgementExpected = 340;
} // namespace MessageFailure

/// What a command answers: lines of information, and how it ended.
struct AtAnswer
{
    QByteArrayList lines;
    Final final = Final::Ok;
    int code = 0;
};

AtAnswer ok();
AtAnswer ok(const QByteArray &line);
AtAnswer error();
AtAnswer equipmentError(int code);
AtAnswer messageError(int code);

/// The words of +CMEE=2 for an error number.
QByteArray equipmentErrorText(int code);

/// Answers a command that reads and sets one number out of a few.
/// @param badValue  the answer to any other value
AtAnswer choice(const AtCommand &command, int &value, std::initializer_list<int> allowed,
                const AtAnswer &badValue);

} // namespace simulator

} // namespace norvane
