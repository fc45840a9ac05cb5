#pragma once

#include "foundation/ui/Twips.h"

namespace norvane {

/// Where the console's movable controls stand, in twips. Starts at the design values.
struct ConsoleLayout
{
    // What the docking keeps: the width follows the window, the height stays.
    float topPanelHeight = 3300;
    float bottomPanelHeight = 1620;
    float messageFrameWidth = 8325;

    Twips::Rect picMiddlePanel{0, 3255, 8670, 2445};
    Twips::Rect picLateralPanel{8610, 0, 6345, 10290};
    Twips::Rect fraCommunication{150, 0, 8325, 2355};
    Twips::Rect txtTerm{165, 300, 7965, 1875};
    Twips::Rect fraQueueDetails{15, 135, 6270, 4170};
    Twips::Rect fraSentDetails{15, 4380, 6270, 2775};
    Twips::Rect grdQueue{150, 300, 5940, 3030};
    Twips::Rect grdSentDetails{150, 300, 5940, 2205};
    Twips::Rect btnStart{4170, 3510, 630, 510};
    Twips::Rect btnStop{4815, 3510, 630, 510};
    Twips::Rect btnClearQueue{5460, 3510, 630, 510};

    bool operator==(const ConsoleLayout &) const = default;
};

/// The console's resize arithmetic for the inner size `width` by `height` of the window, in twips.
/// A move to a negative size fails and leaves that control as it stands; the steps after it go on.
void resizeConsole(ConsoleLayout &layout, float width, float height);

} // namespace norvane
