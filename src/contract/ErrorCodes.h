#pragma once

#include <QtGlobal>

/// The engine's error vocabulary: the numbers that SMSSentFailed and WarningError carry. The words
/// that an operator sees for them are the console's (GetErrorText).
namespace ErrorCode {

inline constexpr qint32 Ok = 1;
inline constexpr qint32 Fail = -1;
inline constexpr qint32 PortNotFound = -2;
inline constexpr qint32 PortProperty = -3;
inline constexpr qint32 PortOpened = -4;
inline constexpr qint32 PortClosed = -5;
inline constexpr qint32 PortWrite = -6;
inline constexpr qint32 PortRead = -7;
inline constexpr qint32 PhoneInit = -8;
inline constexpr qint32 PhoneBusy = -9;
inline constexpr qint32 PhoneSecurity = -10;
inline constexpr qint32 MethodParam = -11;
inline constexpr qint32 InvalidIndex = -13;
inline constexpr qint32 LocationEmpty = -14;
inline constexpr qint32 TextTooLong = -16;
inline constexpr qint32 NumberTooLong = -17;
inline constexpr qint32 InvalidCharacters = -18;
inline constexpr qint32 SmscNotFound = -19;
inline constexpr qint32 SmsService = -20;
inline constexpr qint32 SmsMemoryFull = -21;
inline constexpr qint32 SmsPduParameter = -22;
inline constexpr qint32 MemoryFull = -25;
inline constexpr qint32 MemoryFail = -26;
inline constexpr qint32 IncorrectPassword = -27;
inline constexpr qint32 SimCommunication = -28;
inline constexpr qint32 SimNotInserted = -29;
inline constexpr qint32 SimPinRequired = -30;
inline constexpr qint32 SimPukRequired = -31;
inline constexpr qint32 SimPin2Required = -32;
inline constexpr qint32 SimPuk2Required = -33;
inline constexpr qint32 NetworkTimeout = -35;
inline constexpr qint32 NetworkRp = -36; ///< refused by the network's relay
inline constexpr qint32 NetworkTp = -37; ///< refused by the service centre
inline constexpr qint32 NetworkService = -38;
inline constexpr qint32 NoRespond = -39;
inline constexpr qint32 NotSupported = -40;
inline constexpr qint32 UnexpectedAnswer = -41;
inline constexpr qint32 UnknownCode = -42;
inline constexpr qint32 CallBarred = -51;
inline constexpr qint32 ProtocolTimeout = -54; ///< too late to be sent
inline constexpr qint32 MapFile = -57;         ///< of the engine: its store's file

} // namespace ErrorCode
