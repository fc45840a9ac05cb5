#include "TovekSMService/modem/manager/ManagerFailures.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using ManagerFailures::Stage;

QDBusMessage error(const char *name, const char *text = "")
{
    const bool isOfBus = QLatin1String(name).startsWith("org."_L1);
    return QDBusMessage::createError(
        (isOfBus ? QString() : u"org.freedesktop.ModemManager1.Error."_s) + QLatin1String(name),
        QLatin1String(text));
}

SendFailure sending(const char *name, int parts = 1, const char *text = "")
{
    return ManagerFailures::ofMessage(error(name, text), Stage::Sending, parts);
}

constexpr auto noReply = "org.freedesktop.DBus.Error.NoReply";

TEST(ManagerFailures, anErrorOfAMessageIsItsNumberOfCms)
{
    const struct
    {
        const char *name;
        int number;
        int code;
    } rows[] = {{"Message.MeFailure", 300, ErrorCode::fail},
                {"Message.SimNotInserted", 310, ErrorCode::simNotInserted},
                {"Message.SmscAddressUnknown", 330, ErrorCode::smscNotFound},
                {"Message.NoNetwork", 331, ErrorCode::networkService},
                {"Message.MemoryFull", 322, ErrorCode::smsMemoryFull}};
    for (const auto &row : rows) {
        const SendFailure failure = sending(row.name);
        EXPECT_EQ(failure.problem, SendProblem::CmsError) << row.name;
        EXPECT_EQ(failure.number, row.number) << row.name;
        EXPECT_EQ(failure.rule.code, row.code) << row.name;
        EXPECT_EQ(failure.rule, failureRule(FailureSpace::Cms, row.number)) << row.name;
        EXPECT_FALSE(failure.mayBeDelivered) << row.name;
    }
}

TEST(ManagerFailures, anErrorOfTheNetworkHasItsNumberInTheText)
{
    const SendFailure failure = sending("Message.Unknown", 1, "Unknown message error: 38");
    EXPECT_EQ(failure.number, 38);
    EXPECT_EQ(failure.rule.code, ErrorCode::networkRp);
    EXPECT_EQ(failure.rule.treatment, Treatment::Temporary);
    for (const char *const text : {"", "Unknown", "Unknown message error: x", ": -1"})
        EXPECT_EQ(sending("Message.Unknown", 1, text).number, 500) << text;
}

TEST(ManagerFailures, anErrorOfTheEquipmentIsItsNumberOfCme)
{
    const struct
    {
        const char *name;
        int number;
    } rows[] = {{"MobileEquipment.PhoneFailure", 0},       {"MobileEquipment.SimPin", 11},
                {"MobileEquipment.IncorrectPassword", 16}, {"MobileEquipment.NoNetwork", 30},
                {"MobileEquipment.Unknown", 100},          {"MobileEquipment.IllegalMe", 106},
                {"MobileEquipment.OfTomorrow", 100}};
    for (const auto &row : rows) {
        const SendFailure failure = sending(row.name);
        EXPECT_EQ(failure.problem, SendProblem::CmeError) << row.name;
        EXPECT_EQ(failure.number, row.number) << row.name;
        EXPECT_EQ(failure.rule, failureRule(FailureSpace::Cme, row.number)) << row.name;
    }
}

TEST(ManagerFailures, aFailureInTheMiddleOfALongMessageIsInDoubt)
{
    for (const char *const name :
         {"Message.Unknown", "MobileEquipment.NoNetwork", "Core.Failed", "Core.Connected"}) {
        const SendFailure failure = sending(name, 3);
        EXPECT_TRUE(failure.mayBeDelivered) << name;
        EXPECT_EQ(failure.rule.code, ErrorCode::noRespond) << name;
    }
}

TEST(ManagerFailures, whatGivesNoAnswerIsInDoubt)
{
    for (const char *const name :
         {noReply, "org.freedesktop.DBus.Error.Timeout", "Core.Failed", "Core.Aborted",
          "Core.Cancelled", "Core.Retry", "Serial.ResponseTimeout", "Serial.SendFailed",
          "Of.Tomorrow", "Message.NetworkTimeout"}) {
        const SendFailure failure = sending(name);
        EXPECT_TRUE(failure.mayBeDelivered) << name;
    }
}

TEST(ManagerFailures, whatTheManagerRefusesHasNotLeft)
{
    for (const char *const name :
         {"Core.Unauthorized", "Core.WrongState", "Core.WrongSimState",
          "org.freedesktop.DBus.Error.ServiceUnknown", "org.freedesktop.DBus.Error.UnknownObject",
          "org.freedesktop.DBus.Error.AccessDenied"})
        for (const int parts : {1, 3}) {
            const SendFailure failure = sending(name, parts);
            EXPECT_FALSE(failure.mayBeDelivered) << name;
            EXPECT_EQ(failure.rule.treatment, Treatment::DeviceOrMessage) << name;
        }
}

TEST(ManagerFailures, aPortThatWasLostBeforeIsInDoubtOnlyBehindTheFirstPart)
{
    for (const char *const name : {"Core.Connected", "Core.NotFound", "Serial.NotOpen",
                                   "Serial.OpenFailed", "Serial.OpenFailedNoDevice"}) {
        EXPECT_FALSE(sending(name).mayBeDelivered) << name;
        EXPECT_TRUE(sending(name, 3).mayBeDelivered) << name;
    }
}

TEST(ManagerFailures, nothingLeavesBeforeTheMessageIsCreated)
{
    for (const char *const name : {noReply, "Core.Failed", "Message.Unknown", "Of.Tomorrow"})
        EXPECT_FALSE(ManagerFailures::ofMessage(error(name), Stage::Creating, 3).mayBeDelivered)
            << name;
}

TEST(ManagerFailures, aMessageThatTheManagerCannotMakeIsToBlameItself)
{
    const SendFailure failure =
        ManagerFailures::ofMessage(error("Core.InvalidArgs"), Stage::Creating, 1);
    EXPECT_EQ(failure.rule.code, ErrorCode::methodParam);
    EXPECT_EQ(failure.rule.treatment, Treatment::Permanent);
}

TEST(ManagerFailures, eachWayInWhichTheDeviceCannotBeUsedHasItsCode)
{
    const struct
    {
        const char *name;
        const char *text;
        int code;
    } rows[] = {
        {"org.freedesktop.DBus.Error.ServiceUnknown", "no such name", ErrorCode::portNotFound},
        {"org.freedesktop.DBus.Error.Spawn.ChildExited", "", ErrorCode::portNotFound},
        {"org.freedesktop.systemd1.UnitMasked", "", ErrorCode::portNotFound},
        {"org.freedesktop.DBus.Error.AccessDenied", "", ErrorCode::portClosed},
        {"Core.Unauthorized", "", ErrorCode::portClosed},
        {"Core.Failed", "PolicyKit authorization failed", ErrorCode::portClosed},
        {"Core.Failed", "", ErrorCode::phoneInit},
        {"MobileEquipment.SimNotInserted", "", ErrorCode::simNotInserted},
        {noReply, "", ErrorCode::phoneInit},
    };
    for (const auto &row : rows)
        EXPECT_EQ(ManagerFailures::ofDevice(error(row.name, row.text)).code, row.code)
            << row.name << row.text;
}

TEST(ManagerFailures, theTextNamesTheErrorAndWhatItSays)
{
    EXPECT_EQ(sending("Core.WrongState", 1, "not enabled").text, u"Core.WrongState: not enabled"_s);
    EXPECT_EQ(sending(noReply).text, u"NoReply"_s);
}

} // namespace

} // namespace norvane
