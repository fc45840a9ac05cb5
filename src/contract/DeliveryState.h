#pragma once

#include <QStringView>

namespace norvane {

/// What the network says became of a message or a part of one. The values are stored.
enum class DeliveryState {
    None = 0,      ///< nothing was asked for
    Pending = 1,   ///< the network is still trying, or hasn't said anything yet
    Delivered = 2, ///< it is on the phone
    Refused = 3,   ///< the network has given up
    Unknown = 4,   ///< the network doesn't know, or hasn't said anything in time
};

/// "delivered", "pending", "refused", "unknown", or empty for none.
const char *nameOf(DeliveryState state);
/// The state of that name; none for any other.
DeliveryState deliveryNamed(QStringView name);

} // namespace norvane
