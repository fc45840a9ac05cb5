#include "TovekSMService/reports/PhoneNumber.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

TEST(PhoneNumber, aNumberIsTheSameWithAndWithoutTheCountrysPrefix)
{
    for (const QString &phone : {u"612345678"_s, u"+34612345678"_s, u"0034612345678"_s,
                                 u"+34 612-345-678"_s, u" 612 34 56 78 "_s, u"34612345678"_s})
        EXPECT_EQ(PhoneNumber::key(phone, u"34"_s), u"612345678"_s) << phone.toStdString();
}

TEST(PhoneNumber, aNumberOfAnotherCountryKeepsItsPrefix)
{
    EXPECT_EQ(PhoneNumber::key(u"+351912345678"_s, u"34"_s), u"+351912345678"_s);
    EXPECT_EQ(PhoneNumber::key(u"00351912345678"_s, u"34"_s), u"+351912345678"_s);
}

TEST(PhoneNumber, aNationalNumberThatBeginsLikeThePrefixIsNotCut)
{
    EXPECT_EQ(PhoneNumber::key(u"346123456"_s, u"34"_s), u"346123456"_s);
}

TEST(PhoneNumber, withoutAPrefixAnInternationalNumberIsAnother)
{
    EXPECT_EQ(PhoneNumber::key(u"+34612345678"_s, {}), u"+34612345678"_s);
    EXPECT_EQ(PhoneNumber::key(u"612345678"_s, {}), u"612345678"_s);
}

TEST(PhoneNumber, aNameIsComparedWithoutCase)
{
    EXPECT_EQ(PhoneNumber::key(u"Norvane"_s, u"34"_s), PhoneNumber::key(u"NORVANE"_s, u"34"_s));
}

TEST(PhoneNumber, aReportMayNameTheRecipientWithAPrefixOrWithout)
{
    EXPECT_TRUE(PhoneNumber::isSameRecipient(u"612345678"_s, u"612345678"_s));
    EXPECT_TRUE(PhoneNumber::isSameRecipient(u"612345678"_s, u"+34612345678"_s));
    EXPECT_TRUE(PhoneNumber::isSameRecipient(u"+34612345678"_s, u"612345678"_s));
    EXPECT_TRUE(PhoneNumber::isSameRecipient(u"1234"_s, u"1234"_s));
}

TEST(PhoneNumber, anotherRecipientIsAnother)
{
    EXPECT_FALSE(PhoneNumber::isSameRecipient(u"612345678"_s, u"612345679"_s));
    EXPECT_FALSE(PhoneNumber::isSameRecipient(u"+34612345678"_s, u"+351612345678"_s))
        << "same length, another prefix";
    EXPECT_FALSE(PhoneNumber::isSameRecipient(u"5678"_s, u"+34612345678"_s)) << "a short code";
    EXPECT_FALSE(PhoneNumber::isSameRecipient(QString(), QString()));
}

} // namespace norvane
