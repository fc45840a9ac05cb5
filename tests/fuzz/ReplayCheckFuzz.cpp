#include "fuzz/FuzzTarget.h"

namespace norvane {

// A target that some inputs break, to see that replaying notices them.

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    expectThat(!FuzzInput(data, size).takeRest().startsWith('B'), "an input begins without a B");
    return 0;
}

} // namespace norvane
