#include "TovekSMService/store/TestStore.h"

#include "TovekSMService/store/StoreResults.h"

namespace norvane {

std::unique_ptr<Store> openTestStore(const QString &file)
{
    auto store = std::make_unique<Store>(file);
    done(store->open());
    return store;
}

std::unique_ptr<Store> openTestStore(const QString &file, const Clock & /*clock*/)
{
    return openTestStore(file);
}

} // namespace norvane
