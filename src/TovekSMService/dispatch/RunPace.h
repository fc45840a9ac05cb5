#pragma once

#include <QtGlobal>

namespace norvane {

/// How many messages are noted as leaving with one commit.
///
/// It is one, unless the device takes messages so fast that the commits would be what they wait
/// for: then it is as many as the device takes in a moment, which is as long as a commit takes,
/// within limits. Whatever a crash leaves in doubt is the work of that moment, and with a device
/// that needs the air to send, one message.
class RunPace
{
public:
    struct Limits
    {
        int momentMs = 10;
        int max = 32;         ///< messages
        int maxMomentMs = 50; ///< with a database far away
    };

    explicit RunPace(const Limits &limits) : m_limits(limits) {}

    int length() const { return m_length; }
    /// A time that was set for the shortest moment, for the present one.
    qint64 stretched(qint64 time) const;
    /// What was settled, and what leaves next, needed so many nanoseconds to be committed.
    void recordCommit(qint64 nanoseconds) { m_commitNs = nanoseconds; }
    /// The device has taken `messages` in a row, in so many nanoseconds.
    void recordTaken(int messages, qint64 nanoseconds);
    /// The device's pace isn't known any more.
    void forget() { m_length = 1; }

private:
    /// What the device takes in this time goes with one commit.
    qint64 momentNs() const;

    const Limits m_limits;
    int m_length = 1;
    qint64 m_commitNs = 0; ///< of the last one
};

} // namespace norvane
