#pragma once

#include <QtGlobal>

namespace norvane {

/// The engine's error vocabulary: the numbers that SMSSentFailed and WarningError carry. The words
/// that an operator sees for them are the console's (GetErrorText).
namespace ErrorCode {

inline constexpr qint32 ok = 1;
inline constexpr qint32 fail = -1;
inline constexpr qint32 portNotFound = -2;
inline constexpr qint32 portProperty = -3;
inline constexpr qint32 portOpened = -4;
inline constexpr qint32 portClosed = -5;
inline constexpr qint32 portWrite = -6;
inline constexpr qint32 portRead = -7;
inline constexpr qint32 phoneInit = -8;
inline constexpr qint32 phoneBusy = -9;
inline constexpr qint32 phoneSecurity = -10;
inline constexpr qint32 methodParam = -11;
inline constexpr qint32 invalidIndex = -13;
inline constexpr qint32 locationEmpty = -14;
inline constexpr qint32 textTooLong = -16;
inline constexpr qint32 numberTooLong = -17;
inline constexpr qint32 invalidCharacters = -18;
inline constexpr qint32 smscNotFound = -19;
inline constexpr qint32 smsService = -20;
inline constexpr qint32 smsMemoryFull = -21;
inline constexpr qint32 smsPduParameter = -22;
inline constexpr qint32 memoryFull = -25;
inline constexpr qint32 memoryFail = -26;
inline constexpr qint32 incorrectPassword = -27;
inline constexpr qint32 simCommunication = -28;
inline constexpr qint32 simNotInserted = -29;
inline constexpr qint32 simPinRequired = -30;
inline constexpr qint32 simPukRequired = -31;
inline constexpr qint32 simPin2Required = -32;
inline constexpr qint32 simPuk2Required = -33;
inline constexpr qint32 networkTimeout = -35;
inline constexpr qint32 networkRp = -36; ///< refused by the network's relay
inline constexpr qint32 networkTp = -37; ///< refused by the service centre
inline constexpr qint32 networkService = -38;
inline constexpr qint32 noRespond = -39;
inline constexpr qint32 notSupported = -40;
inline constexpr qint32 unexpectedAnswer = -41;
inline constexpr qint32 unknownCode = -42;
inline constexpr qint32 callBarred = -51;
inline constexpr qint32 protocolTimeout = -54; ///< too late to be sent
inline constexpr qint32 mapFile = -57;         ///< of the engine: its store's file

} // namespace ErrorCode

} // namespace norvane
