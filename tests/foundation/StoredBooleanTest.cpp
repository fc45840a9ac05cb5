#include "foundation/StoredBoolean.h"

#include "common/NumberedFailure.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

TEST(StoredBooleanTest, wordsInAnyCaseAndNumbersAreBooleans)
{
    for (const char16_t *text :
         {u"True", u"true", u"TRUE", u" tRuE\t", u"1", u"-1", u"0.5", u" 12 ", u"1e3"})
        EXPECT_TRUE(toBoolean(QString::fromUtf16(text))) << QString::fromUtf16(text).toStdString();
    for (const char16_t *text :
         {u"False", u"false", u"FALSE", u"  fAlSe ", u"0", u"-0", u"0.0", u"00"})
        EXPECT_FALSE(toBoolean(QString::fromUtf16(text))) << QString::fromUtf16(text).toStdString();
}

TEST(StoredBooleanTest, everythingElseIsATypeMismatch)
{
    for (const char16_t *text :
         {u"", u" ", u"yes", u"Verdadero", u"True False", u"T rue", u"Truex", u"nan", u"inf",
          u"1e999", u"1,5", u"1 2", u"\"True\"", u"#TRUE#"}) {
        try {
            toBoolean(QString::fromUtf16(text));
            ADD_FAILURE() << QString::fromUtf16(text).toStdString();
        } catch (const NumberedFailure &failure) {
            EXPECT_EQ(failure.number(), 13);
            EXPECT_EQ(failure.description(), u"Type mismatch"_s);
        }
    }
}

TEST(StoredBooleanTest, storedFormIsAWordAndReadsBack)
{
    EXPECT_EQ(booleanText(true), u"True"_s);
    EXPECT_EQ(booleanText(false), u"False"_s);
    EXPECT_TRUE(toBoolean(booleanText(true)));
    EXPECT_FALSE(toBoolean(booleanText(false)));
}

} // namespace

} // namespace norvane
