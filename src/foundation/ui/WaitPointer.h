#pragma once

namespace norvane {

/// While it lives, the mouse pointer of the whole program is the hourglass.
class WaitPointer
{
public:
    WaitPointer();
    WaitPointer(const WaitPointer &) = delete;
    WaitPointer &operator=(const WaitPointer &) = delete;
    ~WaitPointer();
};

} // namespace norvane
