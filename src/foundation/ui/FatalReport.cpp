#include "foundation/ui/FatalReport.h"

#include "common/FailureNumbers.h"
#include "foundation/MessageBoxes.h"

#include <cstdlib>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

// The process ends here without running destructors: what a failure has left half-done is not
// touched again. Whatever had to be kept was kept when it changed.
FatalReport::Terminate g_terminate = [](int code) { std::_Exit(code); };
bool g_reporting = false;

} // namespace

void FatalReport::report(const std::exception_ptr &failure)
{
    if (std::exchange(g_reporting, true))
        return;
    messageBoxes().show(Failure::fromException(failure).shown(), MessageBoxes::Icon::Critical,
                        MessageBoxes::Buttons::Ok, u"Norvane SMS"_s);
    g_terminate(EXIT_FAILURE);
    g_reporting = false; // reached only where a test stands in for the end of the process
}

bool FatalReport::isShown()
{
    return g_reporting;
}

FatalReport::Terminate FatalReport::setTerminate(Terminate terminate)
{
    return std::exchange(g_terminate, std::move(terminate));
}

} // namespace norvane
