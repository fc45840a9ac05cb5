#pragma once

#include "contract/DeliveryState.h"

#include <QtGlobal>

namespace norvane {

/// What a status octet means.
struct DeliveryStatus
{
    DeliveryState state = DeliveryState::Pending;
    /// Technical, in English; empty for a delivered part.
    const char *reason = "";
    /// Nothing else comes behind it.
    bool isFinal() const { return state != DeliveryState::Pending; }

    /// TP-Status, 3GPP TS 23.040, 9.2.3.15. A value that is reserved there means that the service
    /// was rejected; one that is a service centre's own means what its group means.
    static DeliveryStatus of(quint8 status);
};

} // namespace norvane
