#pragma once

#include <QDateTime>

namespace norvane {

namespace simulator {

/// The link that messages take to the network, and +CMMS, which keeps it up between them (3GPP TS
/// 27.005, 3.5.6).
class RelayLink
{
public:
    /// What +CMMS is set to.
    enum Mode : int {
        Closed = 0,
        KeptForRow = 1, ///< goes back to Closed behind a pause
        Kept = 2,
    };

    int mode(const QDateTime &now);
    void setMode(int mode);

    /// A message is submitted.
    /// @return whether it found the link up
    bool use(const QDateTime &now);
    /// The message has been answered.
    void answered(const QDateTime &now);
    void reset() { *this = RelayLink(); }

private:
    void expire(const QDateTime &now);

    int m_mode = Closed;
    QDateTime m_lastAnswer; ///< invalid while the link is down
};

} // namespace simulator

} // namespace norvane
