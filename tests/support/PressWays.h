#pragma once

#include <QAbstractButton>
#include <QAccessible>
#include <QTest>

#include <ostream>

namespace norvane {

/// The ways to press a button that leave the mouse out.
enum class PressWay { AccessKey, AssistiveTechnology, Click };

inline constexpr PressWay pressWays[] = {PressWay::AccessKey, PressWay::AssistiveTechnology,
                                         PressWay::Click};

inline std::ostream &operator<<(std::ostream &stream, PressWay way)
{
    constexpr const char *names[] = {"accessKey", "assistiveTechnology", "click"};
    return stream << names[static_cast<int>(way)];
}

/// Presses `button`, which shows itself pressed for a moment before it acts, unless by a click.
inline void press(QAbstractButton *button, PressWay way)
{
    switch (way) {
    case PressWay::AccessKey:
        QTest::keyClick(button->window(), QKeySequence::mnemonic(button->text())[0].key(),
                        Qt::AltModifier);
        return;
    case PressWay::AssistiveTechnology:
        QAccessible::queryAccessibleInterface(button)->actionInterface()->doAction(
            QAccessibleActionInterface::pressAction());
        return;
    case PressWay::Click:
        button->click();
        return;
    }
}

} // namespace norvane
