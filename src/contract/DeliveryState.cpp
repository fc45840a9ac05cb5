#include "contract/DeliveryState.h"

namespace norvane {

const char *nameOf(DeliveryState state)
{
    switch (state) {
    case DeliveryState::None:
        break;
    case DeliveryState::Pending:
        return "pending";
    case DeliveryState::Delivered:
        return "delivered";
    case DeliveryState::Refused:
        return "refused";
    case DeliveryState::Unknown:
        return "unknown";
    }
    return "";
}

DeliveryState deliveryNamed(QStringView name)
{
    for (const DeliveryState state : {DeliveryState::Pending, DeliveryState::Delivered,
                                      DeliveryState::Refused, DeliveryState::Unknown}) {
        if (name == QLatin1String(nameOf(state)))
            return state;
    }
    return DeliveryState::None;
}

} // namespace norvane
