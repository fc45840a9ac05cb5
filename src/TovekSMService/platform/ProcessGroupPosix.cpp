#include "TovekSMService/platform/ProcessGroup.h"

#include <csignal>
#include <sys/types.h>
#include <unistd.h>

namespace norvane {

void ProcessGroup::lead()
{
    ::setsid();
}

void ProcessGroup::kill(qint64 leader)
{
    if (leader > 0)
        ::kill(-static_cast<pid_t>(leader), SIGKILL);
}

} // namespace norvane
