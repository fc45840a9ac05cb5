#pragma once

#include "TovekSMService/store/Store.h"
#include "TovekSMService/store/StoreResults.h"

#include <QTemporaryDir>

#include <memory>

namespace norvane {

/// A store in a folder of the test's own.
inline std::unique_ptr<Store> openStore(const QTemporaryDir &folder)
{
    auto store = std::make_unique<Store>(folder.filePath(QStringLiteral("queue.sqlite")));
    done(store->open());
    return store;
}

} // namespace norvane
