#pragma once

#include "NorvaneSMS/import/FilePicker.h"
#include "NorvaneSMS/import/readers/NumberedFiles.h"
#include "common/SpreadsheetConnection.h"

#include <QString>

#include <functional>
#include <memory>

namespace norvane {

/// What the import dialog is given from outside. A test replaces it.
struct ImportEnvironment
{
    /// A new connection that nothing is open on.
    std::function<std::unique_ptr<SpreadsheetConnection>()> createConnection = {};
    QString programFolder = {};
    FilePicker *picker = &toolkitFilePicker();
    /// The program's, so that a number that a failure left in use stays so.
    std::shared_ptr<NumberedFiles> files = std::make_shared<NumberedFiles>();
};

} // namespace norvane
