#include "common/FailureNumbers.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>

namespace norvane {

using namespace Qt::StringLiterals;

namespace Failure {
namespace {

struct Described
{
    qint32 number;
    const char16_t *text;
};

constexpr std::array descriptions{
    Described{InvalidProcedureCall, u"Invalid procedure call or argument"},
    Described{Overflow, u"Overflow"},
    Described{OutOfMemory, u"Out of memory"},
    Described{SubscriptOutOfRange, u"Subscript out of range"},
    Described{TypeMismatch, u"Type mismatch"},
    Described{InternalError, u"Internal error"},
    Described{BadFileNameOrNumber, u"Bad file name or number"},
    Described{FileNotFound, u"File not found"},
    Described{BadFileMode, u"Bad file mode"},
    Described{FileAlreadyOpen, u"File already open"},
    Described{DeviceIo, u"Device I/O error"},
    Described{FileAlreadyExists, u"File already exists"},
    Described{DiskFull, u"Disk full"},
    Described{InputPastEndOfFile, u"Input past end of file"},
    Described{TooManyFiles, u"Too many files"},
    Described{DeviceUnavailable, u"Device unavailable"},
    Described{PermissionDenied, u"Permission denied"},
    Described{DiskNotReady, u"Disk not ready"},
    Described{PathFileAccess, u"Path/File access error"},
    Described{PathNotFound, u"Path not found"},
    Described{ObjectNotSet, u"Object variable or With block variable not set"},
    Described{InvalidPropertyValue, u"Invalid property value"},
    Described{CannotCreateObject, u"ActiveX component can't create object"},
    Described{KeyAlreadyUsed, u"This key is already associated with an element of this collection"},
    Described{RemoteServerUnavailable,
              u"The remote server machine does not exist or is unavailable"},
    Described{ObjectClosed, u"Operation is not allowed when the object is closed."},
};

struct PlatformError
{
    int errnoValue;
    Number number;
};

constexpr std::array platformErrors{
    PlatformError{ENOMEM, OutOfMemory},
    PlatformError{EBADF, BadFileNameOrNumber},
    PlatformError{EILSEQ, BadFileNameOrNumber},
    // A missing folder on the way has the same errno; a caller that knows raises PathNotFound.
    PlatformError{ENOENT, FileNotFound},
    PlatformError{EIO, DeviceIo},
    PlatformError{EPIPE, DeviceIo},
    PlatformError{EEXIST, FileAlreadyExists},
    PlatformError{ENOSPC, DiskFull},
    PlatformError{EDQUOT, DiskFull},
    PlatformError{EMFILE, TooManyFiles},
    PlatformError{ENFILE, TooManyFiles},
    PlatformError{ENODEV, DeviceUnavailable},
    PlatformError{ENXIO, DeviceUnavailable},
    PlatformError{EACCES, PermissionDenied},
    PlatformError{EPERM, PermissionDenied},
    PlatformError{EROFS, PermissionDenied},
    PlatformError{EBUSY, PermissionDenied},
    PlatformError{EAGAIN, PermissionDenied},
    PlatformError{ENOMEDIUM, DiskNotReady},
    PlatformError{EISDIR, PathFileAccess},
    PlatformError{ETXTBSY, PathFileAccess},
    PlatformError{ENOTEMPTY, PathFileAccess},
    PlatformError{ENOTDIR, PathNotFound},
    PlatformError{ELOOP, PathNotFound},
    PlatformError{ENAMETOOLONG, PathNotFound},
};

} // namespace

QString description(qint32 number)
{
    const auto found = std::ranges::find(descriptions, number, &Described::number);
    return found != descriptions.end() ? QString::fromUtf16(found->text)
                                       : u"Application-defined or object-defined error"_s;
}

Number fromErrno(int errnoValue)
{
    const auto found = std::ranges::find(platformErrors, errnoValue, &PlatformError::errnoValue);
    return found != platformErrors.end() ? found->number : PathFileAccess;
}

NumberedFailure ofErrno(int errnoValue, const QString &source)
{
    const Number number = fromErrno(errnoValue);
    return {number, source, description(number)};
}

void raise(Number number, const QString &source)
{
    throw NumberedFailure(number, source, description(number));
}

void raiseErrno(int errnoValue, const QString &source)
{
    throw ofErrno(errnoValue, source);
}

NumberedFailure fromException(const std::exception_ptr &failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const NumberedFailure &numbered) {
        return numbered;
    } catch (const std::bad_alloc &) {
        return {OutOfMemory, {}, description(OutOfMemory)};
    } catch (const std::exception &other) {
        return {InternalError, {}, QString::fromUtf8(other.what())};
    } catch (...) {
        return {InternalError, {}, description(InternalError)};
    }
}

} // namespace Failure

} // namespace norvane
