#pragma once

#include "foundation/MessageBoxes.h"

#include <QList>

#include <functional>

namespace norvane {

/// Message boxes that are never seen: they keep what was shown while they are in scope, and answer
/// as told.
class RecordingMessageBoxes : public MessageBoxes
{
public:
    struct Shown
    {
        QString text;
        Icon icon;
        Buttons buttons;
        QString title;

        bool operator==(const Shown &) const = default;
    };

    RecordingMessageBoxes() : m_previous(installMessageBoxes(this)) {}
    ~RecordingMessageBoxes() override { installMessageBoxes(m_previous); }

    Answer show(const QString &text, Icon icon, Buttons buttons, const QString &title) override
    {
        shown.append({text, icon, buttons, title});
        if (whileShown)
            whileShown();
        return buttons == Buttons::Ok ? Answer::Ok : yesNoAnswer;
    }

    QList<Shown> shown;
    Answer yesNoAnswer = Answer::Yes;
    std::function<void()> whileShown; ///< runs while a box is open

private:
    MessageBoxes *m_previous;
};

} // namespace norvane
