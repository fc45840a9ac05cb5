#include "gsm-simulator/ReceivedPdu.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

namespace {

std::variant<ReceivedPdu, PduFault> read(const char *hexadecimal)
{
    return readReceived(QByteArray::fromHex(hexadecimal));
}

} // namespace

TEST(ReceivedPdu, aReportIsReadInAllItsFields)
{
    const auto result = read("062A0B914306101122F262211332958540622113329585414600");
    ASSERT_TRUE(std::holds_alternative<ReceivedPdu>(result));
    const auto &pdu = std::get<ReceivedPdu>(result);
    EXPECT_EQ(pdu.type, ReceivedPdu::Type::StatusReport);
    EXPECT_EQ(pdu.firstOctet, 6);
    EXPECT_EQ(pdu.reference, 42);
    EXPECT_EQ(pdu.address, (Address{u"+34600111222"_s, 0x91}));
    EXPECT_EQ(pdu.timestamp.toHex(), "62211332958540");
    EXPECT_EQ(pdu.discharged.toHex(), "62211332958541");
    EXPECT_EQ(pdu.status, 0x46);
}

TEST(ReceivedPdu, aMessageIsReadInAllItsFields)
{
    const auto result = read("040B914306101122F2000062211332958540"
                             "0AE8329BFD4697D9EC37");
    ASSERT_TRUE(std::holds_alternative<ReceivedPdu>(result));
    const auto &pdu = std::get<ReceivedPdu>(result);
    EXPECT_EQ(pdu.type, ReceivedPdu::Type::Deliver);
    EXPECT_EQ(pdu.address, (Address{u"+34600111222"_s, 0x91}));
    EXPECT_EQ(pdu.userData.length, 10);
    EXPECT_EQ(pdu.userData.octets.toHex(), "e8329bfd4697d9ec37");
}

TEST(ReceivedPdu, whatAHeaderSaysIsTheTerminalsMatter)
{
    // An alphabet of another language, and a part that stands nowhere.
    EXPECT_EQ(read("440B914306101122F20000622113329585400603240101"
                   "4101")
                  .index(),
              0U);
    EXPECT_EQ(read("440B914306101122F20004622113329585400605000301"
                   "0203")
                  .index(),
              0U);
}

TEST(ReceivedPdu, whatIsNoneIsAFault)
{
    struct Bad
    {
        const char *hexadecimal;
        PduFault fault;
    };
    for (const Bad &bad : {
             Bad{"", PduFault::Truncated},
             Bad{"01", PduFault::BadType},
             Bad{"03", PduFault::BadType},
             Bad{"062A0B914306101122", PduFault::Truncated},
             Bad{"062A0B914306101122F262211332958540622113329585", PduFault::Truncated},
             Bad{"062A0B91430610112202622113329585406221133295854046", PduFault::BadAddress},
             Bad{"062A0B914306101122F2623113329585406221133295854046", PduFault::BadTimestamp},
             Bad{"062A0B914306101122F262211332958540622113329585A046", PduFault::BadTimestamp},
             Bad{"062A0B914306101122F26221133295854062211332958540", PduFault::Truncated},
             Bad{"040B914306101122F2000062211332958540", PduFault::Truncated},
             Bad{"040B914306101122F200206221133295854000", PduFault::BadCoding},
             Bad{"040B914306101122F2000062211332958540000000", PduFault::TrailingOctets},
             Bad{"440B914306101122F2000462211332958540020501", PduFault::BadHeader},
         }) {
        const auto result = read(bad.hexadecimal);
        ASSERT_TRUE(std::holds_alternative<PduFault>(result)) << bad.hexadecimal;
        EXPECT_EQ(std::get<PduFault>(result), bad.fault) << bad.hexadecimal;
    }
    EXPECT_EQ(std::get<PduFault>(readReceived(QByteArray(165, '\x02'))), PduFault::WrongLength);
}

TEST(ReceivedPdu, theCodingSchemeTellsWhomAMessageIsFor)
{
    for (const auto &[scheme, messageClass] : {std::pair(0x00, -1),
                                               {0x03, -1},
                                               {0x08, -1},
                                               {0x10, 0},
                                               {0x11, 1},
                                               {0x12, 2},
                                               {0x1B, 3},
                                               {0x58, 0},
                                               {0xC0, -1},
                                               {0xD1, -1},
                                               {0xE2, -1},
                                               {0xF0, 0},
                                               {0xF5, 1},
                                               {0xF6, 2},
                                               {0xF7, 3}})
        EXPECT_EQ(messageClassOf(scheme), messageClass) << scheme;
    for (const auto &[scheme, isStored] :
         {std::pair(0x00, false), {0xC8, false}, {0xD8, true}, {0xE8, true}, {0xF0, false}})
        EXPECT_EQ(isStoredWaitingIndication(scheme), isStored) << scheme;
}

} // namespace simulator

} // namespace norvane
