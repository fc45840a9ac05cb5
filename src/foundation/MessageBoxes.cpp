#include "foundation/MessageBoxes.h"

#include <utility>

namespace norvane {

namespace {
MessageBoxes *g_boxes = nullptr;
}

MessageBoxes &messageBoxes()
{
    Q_ASSERT_X(g_boxes, "messageBoxes", "no message boxes installed");
    return *g_boxes;
}

MessageBoxes *installMessageBoxes(MessageBoxes *boxes)
{
    return std::exchange(g_boxes, boxes);
}

} // namespace norvane
