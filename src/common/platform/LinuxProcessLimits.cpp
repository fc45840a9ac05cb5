#include "common/platform/ProcessLimits.h"

#include <csignal>

#include <sys/prctl.h>
#include <sys/resource.h>

namespace norvane {

namespace {

void limit(__rlimit_resource resource, rlim_t max)
{
    const rlimit both{max, max};
    ::setrlimit(resource, &both);
}

} // namespace

void limitThisProcess([[maybe_unused]] quint64 memoryBytes, quint32 processorSeconds)
{
#ifndef __SANITIZE_ADDRESS__
    limit(RLIMIT_AS, memoryBytes);
#endif
    limit(RLIMIT_CPU, processorSeconds);
    limit(RLIMIT_CORE, 0);
    limit(RLIMIT_FSIZE, 0);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
}

} // namespace norvane
