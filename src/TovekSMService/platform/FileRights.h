#pragma once

namespace norvane {

/// Makes every file and folder that this process creates from now on its owner's alone.
void keepFilesToOwner();

} // namespace norvane
