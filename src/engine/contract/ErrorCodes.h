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
inline constexpr qint32 MethodParam = -11;
inline constexpr qint32 TextTooLong = -16;
inline constexpr qint32 NumberTooLong = -17;
inline constexpr qint32 InvalidCharacters = -18;
inline constexpr qint32 NoRespond = -39;
inline constexpr qint32 NotSupported = -40;
inline constexpr qint32 UnknownCode = -42;

} // namespace ErrorCode
