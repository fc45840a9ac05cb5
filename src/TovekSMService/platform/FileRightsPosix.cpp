#include "TovekSMService/platform/FileRights.h"

#include <sys/stat.h>

void keepFilesToOwner()
{
    ::umask(S_IRWXG | S_IRWXO);
}
