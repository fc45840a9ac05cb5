#include "TovekSMService/reports/OptOuts.h"

#include "TovekSMService/store/StoreFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The list under each setting of the country's prefix.
class OptOutsTest : public StoreFixture
{
protected:
    OptOuts optOuts(const QString &countryPrefix = u"34"_s)
    {
        return {m_store->optOuts(), countryPrefix};
    }

    bool add(const QString &phone, const QString &countryPrefix = u"34"_s)
    {
        return given(optOuts(countryPrefix).add(phone, noon()));
    }

    bool remove(const QString &phone, const QString &countryPrefix = u"34"_s)
    {
        return given(optOuts(countryPrefix).remove(phone));
    }

    bool isOptedOut(const QString &phone, const QString &countryPrefix = u"34"_s)
    {
        const OptOuts present = optOuts(countryPrefix);
        return given(present.keys()).contains(present.keyOf(phone));
    }

    QStringList phones()
    {
        QStringList phones;
        for (const OptOut &each : given(optOuts().all()))
            phones.append(each.phone);
        return phones;
    }
};

TEST_F(OptOutsTest, aNumberIsOnTheListWhicheverWayItIsWritten)
{
    EXPECT_TRUE(add(u"612345678"_s));
    for (const QString &phone : {u"612345678"_s, u"+34612345678"_s, u"0034612345678"_s,
                                 u"612 34 56 78"_s, u"+34 612-345-678"_s, u"(612) 345.678"_s})
        EXPECT_TRUE(isOptedOut(phone)) << phone.toStdString();
    for (const QString &phone : {u"612345679"_s, u"+351612345678"_s, u"61234567"_s, QString()})
        EXPECT_FALSE(isOptedOut(phone)) << phone.toStdString();
}

TEST_F(OptOutsTest, withoutAPrefixANationalNumberAndAnInternationalOneAreTwo)
{
    EXPECT_TRUE(add(u"+34 612 345 678"_s, {}));
    EXPECT_TRUE(isOptedOut(u"0034612345678"_s, {}));
    EXPECT_FALSE(isOptedOut(u"612345678"_s, {}));
}

TEST_F(OptOutsTest, aNumberIsListedOnceWithTheMomentAsItWasGiven)
{
    EXPECT_TRUE(add(u" +34 612-345-678 "_s));
    EXPECT_FALSE(add(u"612345678"_s));
    EXPECT_FALSE(add(u"+34 612-345-678"_s));
    EXPECT_TRUE(add(u"699"_s));
    const QList<OptOut> listed = given(optOuts().all());
    ASSERT_EQ(listed.size(), 2);
    EXPECT_EQ(listed.at(0), (OptOut{u"+34 612-345-678"_s, noon()}));
    EXPECT_EQ(listed.at(1), (OptOut{u"699"_s, noon()}));
}

TEST_F(OptOutsTest, aPrefixThatIsSetLaterCountsForThoseListedBefore)
{
    EXPECT_TRUE(add(u"+34612345678"_s, {}));
    EXPECT_FALSE(isOptedOut(u"612345678"_s, {}));
    EXPECT_TRUE(isOptedOut(u"612345678"_s, u"34"_s));
    EXPECT_FALSE(isOptedOut(u"612345678"_s, u"351"_s));
}

TEST_F(OptOutsTest, aNumberIsRemovedUnderAnotherSpelling)
{
    add(u"+34 612 345 678"_s);
    add(u"699"_s);
    EXPECT_TRUE(remove(u"612-345-678"_s));
    EXPECT_EQ(phones(), QStringList{u"699"_s});
    EXPECT_FALSE(isOptedOut(u"+34612345678"_s));
    EXPECT_FALSE(remove(u"612-345-678"_s));
}

TEST_F(OptOutsTest, everySpellingThatHasBecomeTheSameIsRemoved)
{
    EXPECT_TRUE(add(u"+34612345678"_s, {}));
    EXPECT_TRUE(add(u"612345678"_s, {}));
    EXPECT_TRUE(remove(u"0034 612 345 678"_s));
    EXPECT_EQ(phones(), QStringList());
}

TEST_F(OptOutsTest, aSenderWithANameIsListedWithoutRegardToCase)
{
    EXPECT_TRUE(add(u" Norvane "_s));
    EXPECT_TRUE(isOptedOut(u"NORVANE"_s));
    EXPECT_FALSE(add(u"norvane"_s));
    EXPECT_EQ(phones(), QStringList{u"Norvane"_s});
    EXPECT_TRUE(remove(u"nORVANE"_s));
    EXPECT_EQ(phones(), QStringList());
}

TEST_F(OptOutsTest, whatIsBlankIsNobody)
{
    for (const QString &blank : {QString(), u""_s, u" \t"_s})
        EXPECT_FALSE(add(blank));
    EXPECT_EQ(phones(), QStringList());
    add(u"612345678"_s);
    EXPECT_FALSE(remove(u" "_s));
    EXPECT_FALSE(isOptedOut(u" "_s));
}

TEST_F(OptOutsTest, theListSurvivesReopening)
{
    add(u"612345678"_s);
    reopen();
    EXPECT_TRUE(isOptedOut(u"+34612345678"_s));
}

} // namespace

} // namespace norvane
