#pragma once

#include "foundation/MessageBoxes.h"

namespace norvane {

/// The toolkit's message boxes, modal over the program's window: the active one, or the one that is
/// there. Texts are shown as plain text.
class WidgetMessageBoxes : public MessageBoxes
{
public:
    Answer show(const QString &text, Icon icon, Buttons buttons, const QString &title) override;
};

} // namespace norvane
