#pragma once

#include "common/NumberedFailure.h"

#include <QString>

#include <exception>

namespace norvane {

/// The numbers under which failures of the language and of the platform are known. The one table
/// from a platform's error to such a number stands in FailureNumbers.cpp.
namespace Failure {

enum Number : qint32 {
    InvalidProcedureCall = 5,
    Overflow = 6,
    OutOfMemory = 7,
    SubscriptOutOfRange = 9,
    TypeMismatch = 13,
    InternalError = 51,
    BadFileNameOrNumber = 52,
    FileNotFound = 53,
    BadFileMode = 54,
    FileAlreadyOpen = 55,
    DeviceIo = 57,
    FileAlreadyExists = 58,
    DiskFull = 61,
    InputPastEndOfFile = 62,
    TooManyFiles = 67,
    DeviceUnavailable = 68,
    PermissionDenied = 70,
    DiskNotReady = 71,
    PathFileAccess = 75,
    PathNotFound = 76,
    ObjectNotSet = 91,
    InvalidPropertyValue = 380,
    CannotCreateObject = 429,
    KeyAlreadyUsed = 457,
    RemoteServerUnavailable = 462,
    ObjectClosed = 3704,
};

/// The description that belongs to `number`; "Application-defined or object-defined error" for a
/// number that the table doesn't hold.
QString description(qint32 number);

/// The number for the platform's error `errnoValue` (errno on POSIX systems); 75 for an error that
/// the table doesn't hold.
Number fromErrno(int errnoValue);

/// The failure whose number belongs to `errnoValue`.
[[nodiscard]] NumberedFailure ofErrno(int errnoValue, const QString &source);

/// Raises `number` with its own description.
[[noreturn]] void raise(Number number, const QString &source);

/// Raises the number that belongs to `errnoValue`.
[[noreturn]] void raiseErrno(int errnoValue, const QString &source);

/// The numbered failure that `failure` is or, with an empty source, stands for: 7 where memory ran
/// out, 51 for any other.
NumberedFailure fromException(const std::exception_ptr &failure);

} // namespace Failure

} // namespace norvane
