#pragma once

#include "TovekSMService/store/Store.h"
#include "TovekSMService/store/StoreResults.h"
#include "TovekSMService/store/TestStore.h"

#include <QTemporaryDir>

#include <memory>

namespace norvane {

/// A store in a folder of the test's own.
inline std::unique_ptr<Store> openStore(const QTemporaryDir &folder)
{
    return openTestStore(folder.filePath(QStringLiteral("queue.sqlite")));
}

} // namespace norvane
