#include "TovekSMService/store/PostgresText.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

TEST(PostgresText, placesAreNumberedOutsideOfLiterals)
{
    EXPECT_EQ(PostgresText::withNumberedPlaces("a = ? AND b = '?' AND c = ?"),
              "a = $1 AND b = '?' AND c = $2");
}

TEST(PostgresText, textIsFoundWhateverItsCapitals)
{
    EXPECT_EQ(PostgresText::withNumberedPlaces("a LIKE ?"), "a ILIKE $1");
}

TEST(PostgresText, aTextKeepsEverythingButNul)
{
    const QString text = u"a"_s + QChar(QChar::Null) + u"ñ€😀\\\"'"_s;
    EXPECT_EQ(PostgresText::of(text), u"a ñ€😀\\\"'"_s.toUtf8());
    EXPECT_EQ(PostgresText::of(QString()), QByteArray(""));
    EXPECT_EQ(PostgresText::of(true), "t");
    EXPECT_EQ(PostgresText::of(-7), "-7");
}

TEST(PostgresText, anArrayQuotesWhatIsSpecialInIt)
{
    EXPECT_EQ(PostgresText::array(QList<qint64>{1, -2}), u"{1,-2}"_s);
    EXPECT_EQ(PostgresText::array(QList<qint64>()), u"{}"_s);
    EXPECT_EQ(PostgresText::array(QStringList{u"a,b"_s, u"{c}"_s, u"\"\\"_s, QString()}),
              u"{\"a,b\",\"{c}\",\"\\\"\\\\\",\"\"}"_s);
}

TEST(PostgresText, aPasswordIsFoundInEachFormOfAConnectionString)
{
    EXPECT_TRUE(PostgresText::hasPassword(u"host=a password=x"_s));
    EXPECT_TRUE(PostgresText::hasPassword(u"postgresql://u:x@a/b"_s));
    EXPECT_FALSE(PostgresText::hasPassword(u"host=a user=password"_s));
    EXPECT_FALSE(PostgresText::hasPassword(u"host=a password=''"_s));
    EXPECT_FALSE(PostgresText::hasPassword(QString()));
    EXPECT_TRUE(PostgresText::hasPassword(u"host='a password=x"_s)) << "it can't be read";
}

} // namespace

} // namespace norvane
