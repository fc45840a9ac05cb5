#include "TovekSMService/reports/DeliveryStatus.h"

#include <algorithm>
#include <iterator>

namespace norvane {

namespace {

struct StatusRow
{
    quint8 first;
    quint8 last;
    DeliveryState state;
    const char *reason;
};

// 3GPP TS 23.040, 9.2.3.15.
constexpr StatusRow rows[] = {
    {0x00, 0x00, DeliveryState::Delivered, ""},
    {0x01, 0x01, DeliveryState::Unknown, "forwarded, but the centre can't confirm delivery"},
    {0x02, 0x02, DeliveryState::Unknown, "replaced by the service centre"},
    {0x10, 0x1F, DeliveryState::Delivered, ""},

    {0x20, 0x20, DeliveryState::Pending, "congestion"},
    {0x21, 0x21, DeliveryState::Pending, "the phone is busy"},
    {0x22, 0x22, DeliveryState::Pending, "no response from the phone"},
    {0x23, 0x23, DeliveryState::Pending, "service rejected"},
    {0x24, 0x24, DeliveryState::Pending, "quality of service not available"},
    {0x25, 0x25, DeliveryState::Pending, "error in the phone"},
    {0x30, 0x3F, DeliveryState::Pending, "a reason of the service centre's own"},

    {0x40, 0x40, DeliveryState::Refused, "remote procedure error"},
    {0x41, 0x41, DeliveryState::Refused, "incompatible destination"},
    {0x42, 0x42, DeliveryState::Refused, "connection rejected by the phone"},
    {0x43, 0x43, DeliveryState::Refused, "not obtainable"},
    {0x44, 0x44, DeliveryState::Refused, "quality of service not available"},
    {0x45, 0x45, DeliveryState::Refused, "no interworking available"},
    {0x46, 0x46, DeliveryState::Refused, "validity period expired"},
    {0x47, 0x47, DeliveryState::Refused, "deleted by its sender"},
    {0x48, 0x48, DeliveryState::Refused, "deleted by the service centre"},
    {0x49, 0x49, DeliveryState::Refused, "the message doesn't exist"},
    {0x50, 0x5F, DeliveryState::Refused, "a reason of the service centre's own"},

    {0x60, 0x60, DeliveryState::Refused, "congestion"},
    {0x61, 0x61, DeliveryState::Refused, "the phone is busy"},
    {0x62, 0x62, DeliveryState::Refused, "no response from the phone"},
    {0x63, 0x63, DeliveryState::Refused, "service rejected"},
    {0x64, 0x64, DeliveryState::Refused, "quality of service not available"},
    {0x65, 0x65, DeliveryState::Refused, "error in the phone"},
    {0x70, 0x7F, DeliveryState::Refused, "a reason of the service centre's own"},
};

} // namespace

DeliveryStatus DeliveryStatus::of(quint8 status)
{
    const auto *const found =
        std::find_if(std::begin(rows), std::end(rows), [status](const StatusRow &row) {
            return status >= row.first && status <= row.last;
        });
    if (found == std::end(rows))
        return {DeliveryState::Refused, "service rejected"};
    return {found->state, found->reason};
}

} // namespace norvane
