#include "TovekSMService/modem/device/ManagedMailbox.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int deliver = 1;
constexpr int statusReport = 3;
constexpr int receiving = 2;
constexpr int received = 3;

/// What the modem manager shows of a text that came.
QVariantMap textProperties()
{
    return {{u"State"_s, received},           {u"PduType"_s, deliver},
            {u"Number"_s, u"+34600111222"_s}, {u"Text"_s, u"Sí, gracias"_s},
            {u"Data"_s, QByteArray()},        {u"Timestamp"_s, u"2026-11-22T10:20:30+01"_s}};
}

QVariantMap reportProperties()
{
    return {{u"State"_s, received},
            {u"PduType"_s, statusReport},
            {u"Number"_s, u"+34600111222"_s},
            {u"MessageReference"_s, 200U},
            {u"DeliveryState"_s, 0x46U},
            {u"DischargeTimestamp"_s, u"2026-11-22T10:20:35+01:00"_s}};
}

QVariantMap changed(QVariantMap properties, const QString &name, const QVariant &value)
{
    properties.insert(name, value);
    return properties;
}

std::optional<Arrival> arrivalOf(const QVariantMap &properties)
{
    return ManagedMailbox::arrivalOf(u"/org/freedesktop/ModemManager1/SMS/7"_s, properties);
}

DeliverPdu messageOf(const QVariantMap &properties)
{
    const std::optional<Arrival> arrival = arrivalOf(properties);
    const auto *const message = arrival ? std::get_if<DeliverPdu>(&arrival->contents) : nullptr;
    EXPECT_NE(message, nullptr);
    return message == nullptr ? DeliverPdu() : *message;
}

TEST(ManagedArrival, aTextHasItsSenderAndItsMoment)
{
    const DeliverPdu message = messageOf(textProperties());
    EXPECT_EQ(message.sender, u"+34600111222"_s);
    EXPECT_EQ(message.text, u"Sí, gracias"_s);
    EXPECT_EQ(message.content, DeliverPdu::Content::Text);
    EXPECT_EQ(message.sentAt.toString(Qt::ISODate), u"2026-11-22T10:20:30+01:00"_s);
    EXPECT_FALSE(message.concatenation);
}

TEST(ManagedArrival, aTextWhosePartsAreMissingIsNotTaken)
{
    EXPECT_FALSE(arrivalOf(changed(textProperties(), u"State"_s, receiving)));
}

TEST(ManagedArrival, whatSomebodyWroteWithTheDeviceIsNotOurs)
{
    constexpr int stored = 1;
    constexpr int submit = 2;
    EXPECT_FALSE(arrivalOf(changed(textProperties(), u"State"_s, stored)));
    EXPECT_FALSE(arrivalOf(changed(textProperties(), u"PduType"_s, submit)));
    EXPECT_FALSE(arrivalOf({}));
}

TEST(ManagedArrival, aMessageOfOctetsIsTheirHexadecimal)
{
    QVariantMap properties = changed(textProperties(), u"Text"_s, QString());
    properties.insert(u"Data"_s, QByteArray::fromHex("00ff7e"));
    const DeliverPdu message = messageOf(properties);
    EXPECT_EQ(message.content, DeliverPdu::Content::Binary);
    EXPECT_EQ(message.text, u"00FF7E"_s);
}

TEST(ManagedArrival, aNotificationOfAPictureMessageIsToldByItsType)
{
    QVariantMap properties = changed(textProperties(), u"Text"_s, QString());
    properties.insert(u"Data"_s, QByteArray("\x01\x06\x22") + "application/vnd.wap.mms-message" +
                                     '\0' + "more");
    EXPECT_EQ(messageOf(properties).content, DeliverPdu::Content::PictureNotification);
}

TEST(ManagedArrival, aMomentThatMakesNoSenseIsNone)
{
    EXPECT_FALSE(messageOf(changed(textProperties(), u"Timestamp"_s, u"soon"_s)).sentAt.isValid());
}

TEST(ManagedArrival, aReportHasItsReferenceItsRecipientAndItsStatus)
{
    const std::optional<Arrival> arrival = arrivalOf(reportProperties());
    ASSERT_TRUE(arrival);
    const auto *const report = std::get_if<StatusReportPdu>(&arrival->contents);
    ASSERT_NE(report, nullptr);
    EXPECT_EQ(report->reference, 200);
    EXPECT_EQ(report->recipient, u"+34600111222"_s);
    EXPECT_EQ(report->status, 0x46);
    EXPECT_EQ(report->at.toString(Qt::ISODate), u"2026-11-22T10:20:35+01:00"_s);
}

TEST(ManagedArrival, aReportWithoutAStatusIsNone)
{
    EXPECT_FALSE(arrivalOf(changed(reportProperties(), u"DeliveryState"_s, 0x100U)));
}

TEST(ManagedArrival, theSameMessageIsKnownUnderAnotherObject)
{
    const QVariantMap text = textProperties();
    const auto other = ManagedMailbox::arrivalOf(u"/org/freedesktop/ModemManager1/SMS/9"_s, text);
    EXPECT_EQ(arrivalOf(text)->pdu, other->pdu);
    EXPECT_NE(arrivalOf(text)->memory, other->memory);
    for (const auto &[name, value] :
         {std::pair(u"Number"_s, QVariant(u"+34600111223"_s)),
          std::pair(u"Text"_s, QVariant(u"No"_s)),
          std::pair(u"Timestamp"_s, QVariant(u"2026-11-22T10:20:31+01"_s)),
          std::pair(u"Data"_s, QVariant(QByteArray("x")))})
        EXPECT_NE(arrivalOf(text)->pdu, arrivalOf(changed(text, name, value))->pdu)
            << qPrintable(name);
}

} // namespace

} // namespace norvane
