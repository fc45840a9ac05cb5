#include "TovekSMService/platform/PlatformFailure.h"

#include <cerrno>

namespace norvane {

namespace {

PlatformFailure::Kind kindOf(int error)
{
    using Kind = PlatformFailure::Kind;
    switch (error) {
    case EBUSY:
        return Kind::HeldByAnother;
    case EACCES:
    case EPERM:
        return Kind::NotPermitted;
    case ENOENT:
    case ENODEV:
    case ENXIO:
        return Kind::Gone;
    default:
        return Kind::Other;
    }
}

} // namespace

PlatformFailure PlatformFailure::ofErrno(int error)
{
    return {kindOf(error), qt_error_string(error)};
}

} // namespace norvane
