#include "TovekSMService/platform/FileRights.h"

#include <sys/stat.h>

namespace norvane {

void keepFilesToOwner()
{
    ::umask(S_IRWXG | S_IRWXO);
}

} // namespace norvane
