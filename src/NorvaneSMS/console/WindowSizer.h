#pragma once

#include <memory>

class QWidget;

namespace norvane {

class WindowHook;

/// Gives the console's window the size of its mode, and keeps it within that mode's limits.
class WindowSizer
{
public:
    explicit WindowSizer(QWidget *window);
    ~WindowSizer();

    /// Gives the window the size and the limits of the mode, and centres it.
    void setMode(bool serverMode);
    /// Begins to keep the sizes that the operator gives within the limits.
    void watch();
    void unwatch();

private:
    QWidget *m_window;
    std::unique_ptr<WindowHook> m_hook;
};

} // namespace norvane
