#include "TovekSMService/admin/AdminFailure.h"

#include "TovekSMService/admin/ExitCodes.h"

#include <QTextStream>

namespace norvane {

int report(const AdminFailure &failure)
{
    QTextStream(stderr) << "TovekSMService: " << failure.text << '\n';
    return ExitCode::failed;
}

} // namespace norvane
