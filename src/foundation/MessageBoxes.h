#pragma once

#include <QString>

namespace norvane {

/// The one way to a message box. The program installs the toolkit's boxes, a test its own that
/// answer and keep what was shown.
class MessageBoxes
{
public:
    enum class Icon { None, Critical, Question, Exclamation, Information };
    enum class Buttons {
        Ok,
        YesNo,
        YesNoDefaultNo, ///< the Enter key answers No
    };
    enum class Answer { Ok, Yes, No };

    MessageBoxes() = default;
    MessageBoxes(const MessageBoxes &) = delete;
    MessageBoxes &operator=(const MessageBoxes &) = delete;
    virtual ~MessageBoxes() = default;

    /// Shows a box and waits for its answer. A box that is closed without a button answers Ok or
    /// No.
    virtual Answer show(const QString &text, Icon icon, Buttons buttons, const QString &title) = 0;
};

/// The boxes in use.
MessageBoxes &messageBoxes();

/// Makes `boxes` the boxes in use until the next call; they must outlive it.
/// @return the boxes that were in use, null when there were none
MessageBoxes *installMessageBoxes(MessageBoxes *boxes);

} // namespace norvane
