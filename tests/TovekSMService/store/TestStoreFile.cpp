#include "TovekSMService/store/TestStore.h"

#include "TovekSMService/store/StoreResults.h"

namespace norvane {

std::unique_ptr<Store> openTestStore(const QString &file)
{
    auto store = std::make_unique<Store>(file);
    done(store->open());
    return store;
}

std::unique_ptr<Store> openTestStore(const QString &file, const Clock &clock)
{
    auto store = std::make_unique<Store>(
        file, [&clock](qint64 seconds) { return clock.wallClockText(seconds); });
    done(store->open());
    return store;
}

} // namespace norvane
