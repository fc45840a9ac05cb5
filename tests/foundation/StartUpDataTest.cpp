#include "foundation/clsStartUpData.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

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
    EXPECT_EQ(texts.get(bound), u"0"_s);
    EXPECT_EQ(texts.get(-1), u"0"_s);

    texts.set(0, u"first"_s);
    texts.set(bound - 1, u"last"_s);
    texts.set(bound, u"beyond"_s);
    texts.set(-1, u"before"_s);
    EXPECT_EQ(texts.get(0), u"first"_s);
    EXPECT_EQ(texts.get(bound - 1), u"last"_s);
    EXPECT_EQ(texts.get(bound), u"0"_s);
    EXPECT_EQ(texts.get(-1), u"0"_s);
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

} // namespace norvane
