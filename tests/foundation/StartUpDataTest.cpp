#include "foundation/clsStartUpData.h"

#include <gtest/gtest.h>

namespace {

TEST(StartUpDataTest, beginsEmptyAndOutOfDebugMode)
{
    const clsStartUpData data;
    EXPECT_FALSE(data.DebugMode);
    for (const QString &text :
         {data.Country, data.CountryName, data.Language, data.LanguageName, data.DecimalSeparator,
          data.ThousandSeparator, data.ShortDateFormat, data.LongDateFormat})
        EXPECT_EQ(text, QString());
}

template <typename Texts>
void expectBound(Texts &texts, qint32 bound)
{
    EXPECT_EQ(texts.get(0), QString());
    EXPECT_EQ(texts.get(bound - 1), QString());
    EXPECT_EQ(texts.get(bound), QStringLiteral("0"));
    EXPECT_EQ(texts.get(-1), QStringLiteral("0"));

    texts.set(0, QStringLiteral("first"));
    texts.set(bound - 1, QStringLiteral("last"));
    texts.set(bound, QStringLiteral("beyond"));
    texts.set(-1, QStringLiteral("before"));
    EXPECT_EQ(texts.get(0), QStringLiteral("first"));
    EXPECT_EQ(texts.get(bound - 1), QStringLiteral("last"));
    EXPECT_EQ(texts.get(bound), QStringLiteral("0"));
    EXPECT_EQ(texts.get(-1), QStringLiteral("0"));
}

TEST(StartUpDataTest, indexedPropertiesKeepTheirBounds)
{
    clsStartUpData data;
    expectBound(data.FileLayoutFolder, 19);
    expectBound(data.HeaderSaleTransactionTabOrder, 19);
    expectBound(data.HeaderBuyTransactionTabOrder, 20);
    expectBound(data.HeaderTechnicalAssistanceProcessTabOrder, 43);
}

} // namespace
