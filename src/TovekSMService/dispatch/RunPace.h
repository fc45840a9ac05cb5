#pragma once

#include <QtGlobal>

namespace norvane {

/// How many messages are noted as leaving with one commit.
///
/// It is one, unless the device takes messages so fast that the disk would be what they wait for:
/// then it is as many as the device takes in a moment. Whatever a crash leaves in doubt is the work
/// of that moment, and with a device that needs the air to send, one message.
class RunPace
{
public:
    struct Limits
    {
        int momentMs = 5;
        int max = 32;
    };

    explicit RunPace(const Limits &limits) : m_limits(limits) {}

    int length() const { return m_length; }
    /// The device has taken `messages` in a row, in so many nanoseconds.
    void recordTaken(int messages, qint64 nanoseconds);
    /// The device's pace isn't known any more.
    void forget() { m_length = 1; }

private:
    const Limits m_limits;
    int m_length = 1;
};

} // namespace norvane
