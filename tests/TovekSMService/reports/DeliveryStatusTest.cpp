#include "TovekSMService/reports/DeliveryStatus.h"

#include <gtest/gtest.h>

#include <string>

namespace norvane {

TEST(DeliveryStatus, everyOctetHasItsMeaning)
{
    struct Row
    {
        int first;
        int last;
        DeliveryState state;
    };
    // 3GPP TS 23.040, 9.2.3.15: what is reserved counts as a rejected service.
    const Row rows[] = {
        {0x00, 0x00, DeliveryState::Delivered}, {0x01, 0x02, DeliveryState::Unknown},
        {0x03, 0x0F, DeliveryState::Refused},   {0x10, 0x1F, DeliveryState::Delivered},
        {0x20, 0x25, DeliveryState::Pending},   {0x26, 0x2F, DeliveryState::Refused},
        {0x30, 0x3F, DeliveryState::Pending},   {0x40, 0xFF, DeliveryState::Refused}};
    int next = 0;
    for (const Row &row : rows) {
        ASSERT_EQ(row.first, next);
        for (int status = row.first; status <= row.last; ++status)
            EXPECT_EQ(DeliveryStatus::of(static_cast<quint8>(status)).state, row.state) << status;
        next = row.last + 1;
    }
    EXPECT_EQ(next, 0x100);
}

TEST(DeliveryStatus, whatWasNotDeliveredHasAReason)
{
    for (int status = 0; status <= 0xFF; ++status) {
        const DeliveryStatus meaning = DeliveryStatus::of(static_cast<quint8>(status));
        EXPECT_EQ(std::string(meaning.reason).empty(), meaning.state == DeliveryState::Delivered)
            << status;
    }
    EXPECT_STREQ(DeliveryStatus::of(0x46).reason, "validity period expired");
    EXPECT_STREQ(DeliveryStatus::of(0x80).reason, "service rejected");
}

TEST(DeliveryStatus, eachStateHasTheNameThatReportsShow)
{
    EXPECT_STREQ(nameOf(DeliveryState::None), "");
    EXPECT_STREQ(nameOf(DeliveryState::Pending), "pending");
    EXPECT_STREQ(nameOf(DeliveryState::Delivered), "delivered");
    EXPECT_STREQ(nameOf(DeliveryState::Refused), "refused");
    EXPECT_STREQ(nameOf(DeliveryState::Unknown), "unknown");
}

} // namespace norvane
