#pragma once

#include "TovekSMService/store/Store.h"

#include <QTemporaryDir>

#include <memory>

namespace norvane {

/// A store in a folder of the test's own.
inline std::unique_ptr<Store> openStore(const QTemporaryDir &folder)
{
    return std::make_unique<Store>(folder.filePath(QStringLiteral("queue.sqlite")));
}

} // namespace norvane
