#include "NorvaneSMS/queue/QueueDropFile.h"

#include "NorvaneSMS/queue/Fixture.h"
#include "foundation/Normalisation.h"
#include "support/RaisedFailure.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

using QueueDropFile::Record;

namespace {

QDateTime at(int year, int month, int day, int hour = 0, int minute = 0, int second = 0)
{
    return {QDate(year, month, day), QTime(hour, minute, second), Qt::UTC};
}

/// A record whose date field holds these 14 characters.
QByteArray withDate(const QByteArray &date)
{
    EXPECT_EQ(date.size(), 14) << date.constData();
    return "912345678" + QByteArray(16, ' ') + date + "Ola" + QByteArray(157, ' ');
}

QDateTime decodedDate(const QByteArray &date)
{
    return QueueDropFile::decode(withDate(date)).deliveryDate;
}

TEST(PadFieldTest, fieldIsFilledCutOrLeftAsItIs)
{
    EXPECT_EQ(PadField(u"ab"_s, 5, u' '), u"ab   "_s);
    EXPECT_EQ(PadField(u"abcde"_s, 5, u' '), u"abcde"_s);
    EXPECT_EQ(PadField(u"abcdef"_s, 5, u' '), u"abcde"_s);
    EXPECT_EQ(PadField(QString(), 3, u'0'), u"000"_s);
    EXPECT_EQ(PadField(u"ab"_s, 0, u' '), QString());
    EXPECT_EQ(PadField(u"ab"_s, -1, u' '), QString());
    EXPECT_EQ(PadField(QString(), 32767, u'x').size(), 32767);
}

TEST(DropFileNameTest, numberHasNoLeadingZeros)
{
    EXPECT_EQ(QueueDropFile::fileName(0), u"sms.0"_s);
    EXPECT_EQ(QueueDropFile::fileName(10), u"sms.10"_s);
    EXPECT_EQ(QueueDropFile::fileName(32767), u"sms.32767"_s);
}

TEST(EncodeTest, recordIsTheBytesOfTheTable)
{
    EXPECT_EQ(QueueDropFile::encode({u"912345678"_s, at(2009, 3, 5, 14, 7, 9), u"Ola"_s}),
              fixture(u"one"_s));
}

TEST(EncodeTest, phoneIsWrittenAsGivenAndLineBreaksStay)
{
    EXPECT_EQ(QueueDropFile::encode({u"+34 600-123 456"_s, at(2026, 12, 31, 23, 59, 58),
                                     u"Su pedido\r\nesta listo"_s}),
              fixture(u"three"_s).mid(199, 199));
}

TEST(EncodeTest, messageOf160CharactersFillsItsField)
{
    EXPECT_EQ(QueueDropFile::encode({u"1"_s, at(100, 1, 1), QString(160, u'a')}),
              fixture(u"three"_s).mid(398));
}

TEST(EncodeTest, phoneOf30IsCutTo25AndMessageOf170To160)
{
    const QByteArray record =
        QueueDropFile::encode({u"123456789012345678901234567890"_s, at(2009, 3, 5),
                               QString(160, u'm') + u"0123456789"_s});
    ASSERT_EQ(record.size(), 199);
    EXPECT_EQ(record.first(25), "1234567890123456789012345");
    EXPECT_EQ(record.mid(39), QByteArray(160, 'm'));
}

TEST(EncodeTest, widthsAreCountedInBytesOfTheCodePage)
{
    // Characters outside the code page count one for each of their 16-bit units.
    const QByteArray record =
        QueueDropFile::encode({u"€9Ā\U0001F600"_s, at(2009, 3, 5), u"\U0001F600"_s.repeated(85)});
    ASSERT_EQ(record.size(), 199);
    EXPECT_EQ(record.first(25), "\x80"
                                "9???" +
                                    QByteArray(20, ' '));
    EXPECT_EQ(record.mid(39), QByteArray(160, '?'));
}

TEST(EncodeTest, normalisedSignsAreOemBytes)
{
    const QByteArray record =
        QueueDropFile::encode({u"1"_s, at(2009, 3, 5), NormalizeSMSText(false, u"nº 5 ¿ñ?"_s)});
    EXPECT_EQ(record.mid(39, 9), "n\xA7 5 \xA8n? ");
}

TEST(DecodeTest, recordOfTheTable)
{
    EXPECT_EQ(QueueDropFile::decode(fixture(u"one"_s)),
              (Record{u"912345678"_s, at(2009, 3, 5, 14, 7, 9), u"Ola"_s}));
}

TEST(DecodeTest, blanksAndDashesOfThePhoneAreRemovedWhereverTheyStand)
{
    QByteArray record = fixture(u"one"_s);
    record.replace(0, 25, " -9-1 2- 3+4.5 --       -");
    EXPECT_EQ(QueueDropFile::decode(record).phone, u"9123+4.5"_s);
}

TEST(DecodeTest, emptyPhoneAndEmptyMessageAreNotRefused)
{
    EXPECT_EQ(QueueDropFile::decode(fixture(u"blank"_s)),
              (Record{QString(), at(2009, 3, 5, 14, 7, 9), QString()}));
}

TEST(DecodeTest, onlySpacesAroundTheMessageAreRemoved)
{
    QByteArray record = fixture(u"one"_s);
    record.replace(39, 160, "  \t a  b \r\n\xA0" + QByteArray(148, ' '));
    EXPECT_EQ(QueueDropFile::decode(record).message, u"\t a  b \r\n\u00A0"_s);
}

TEST(DecodeTest, everyByteOfPhoneAndMessageSurvives)
{
    const QByteArray bytes = fixture(u"bytes"_s);
    const Record record = QueueDropFile::decode(bytes);
    EXPECT_EQ(record.phone, QString(QChar(QChar::Null)) + u"ÿ912\u00A0"_s);
    ASSERT_EQ(record.message.size(), 160);
    for (int i = 0; i < 160; ++i) {
        const auto byte = static_cast<quint8>(bytes.at(39 + i));
        if (byte < 0x80 || byte > 0x9F) {
            EXPECT_EQ(record.message.at(i).unicode(), byte) << i;
        }
    }
    // The others are the signs of the ANSI code page, from 0x80 on behind 32 controls and DEL.
    EXPECT_EQ(record.message.at(1 + 32 + 1), u'€');
    EXPECT_EQ(record.message.at(1 + 32 + 2), u'\x81');
    EXPECT_EQ(record.message.at(1 + 32 + 4), u'ƒ');
    EXPECT_EQ(record.message.at(1 + 32 + 32), u'Ÿ');
    EXPECT_EQ(QueueDropFile::encode(record), bytes);
}

TEST(DecodeTest, theReaderDoesNotConvertOemBytesBack)
{
    QByteArray record = fixture(u"one"_s);
    record.replace(39, 3, "n\xA7 ");
    EXPECT_EQ(QueueDropFile::decode(record).message, u"n§"_s);
}

TEST(DecodeTest, dateInThePastIsReadLikeAnyOther)
{
    EXPECT_EQ(decodedDate("01011970000000"), at(1970, 1, 1));
    EXPECT_EQ(decodedDate("14091752235959"), at(1752, 9, 14, 23, 59, 59));
}

TEST(DecodeTest, partsOutOfRangeCarryOver)
{
    const QList<std::pair<QByteArray, QDateTime>> cases{
        {"01132009000000", at(2010, 1, 1)},
        {"01002009000000", at(2008, 12, 1)},
        {"31022009000000", at(2009, 3, 3)},
        {"30022008000000", at(2008, 3, 1)},
        {"00032009000000", at(2009, 2, 28)},
        {"99992009000000", at(2017, 6, 7)},
        {"31122009235960", at(2010, 1, 1)},
        {"01012009240000", at(2009, 1, 2)},
        {"01012009006000", at(2009, 1, 1, 1)},
        {"01012009999999", at(2009, 1, 5, 4, 40, 39)},
        {"-1012009000000", at(2008, 12, 30)},
        {"01-12009000000", at(2008, 11, 1)},
        {"01012009-1-1-1", at(2008, 12, 31, 22, 58, 59)},
    };
    for (const auto &[date, expected] : cases)
        EXPECT_EQ(decodedDate(date), expected) << date.constData();
}

TEST(DecodeTest, dateFieldsConvertAsNumbersDo)
{
    EXPECT_EQ(decodedDate(" 5 32009 1 2 3"), at(2009, 3, 5, 1, 2, 3));
    EXPECT_EQ(decodedDate("5 3 20091 2 3 "), at(2009, 3, 5, 1, 2, 3));
    EXPECT_EQ(decodedDate("+5&3 2E3.71,1-"), at(2000, 3, 5, 1, 0, 59));
}

TEST(DecodeTest, yearsBelow100AreThoseOfTheCenturyAround2000)
{
    const QList<std::pair<QByteArray, int>> cases{{"0000", 2000}, {"  29", 2029}, {"0030", 1930},
                                                  {"99  ", 1999}, {"0100", 100},  {" 999", 999},
                                                  {"9999", 9999}};
    for (const auto &[field, year] : cases)
        EXPECT_EQ(decodedDate("0101" + field + "000000"), at(year, 1, 1)) << field.constData();
    EXPECT_EQ(decodedDate("01130099000000"), at(2000, 1, 1)) << "the century comes first";
    EXPECT_EQ(decodedDate("31122029235960"), at(2030, 1, 1));
}

TEST(DecodeTest, momentsOutsideTheCalendarAreFailures)
{
    EXPECT_EQ(decodedDate("31129999235959"), at(9999, 12, 31, 23, 59, 59));
    for (const QByteArray &date :
         {QByteArray("31129999235960"), QByteArray("32129999000000"), QByteArray("01139999000000"),
          QByteArray("0101&HFF000000").replace(4, 4, "3E4 "), QByteArray("01000100000000"),
          QByteArray("00010100000000"), QByteArray("010101000000-1"), QByteArray("0101-100000000"),
          QByteArray("0101  -1000000")})
        EXPECT_EQ(raisedNumber([&] { decodedDate(date); }), 5) << date.constData();
}

TEST(DecodeTest, aDateThatIsNoneTellsWhereItWasMet)
{
    EXPECT_EQ(raisedFailure([] { decodedDate("0101-100000000"); })->source(),
              u"QueueDropFile::decode"_s);
}

TEST(DecodeTest, dateFieldThatIsNoNumberIsAFailure)
{
    const QByteArray good = "05032009140709";
    for (const auto &[place, length] :
         QList<std::pair<int, int>>{{0, 2}, {2, 2}, {4, 4}, {8, 2}, {10, 2}, {12, 2}}) {
        for (const char filler : {' ', 'x', '\0', '-', '\xA0', '/'}) {
            QByteArray date = good;
            date.replace(place, length, QByteArray(length, filler));
            EXPECT_EQ(raisedNumber([&] { decodedDate(date); }), 13)
                << date.constData() << " at " << place;
        }
    }
    EXPECT_EQ(raisedNumber([] {
                  decodedDate("0503"
                              "9E99"
                              "140709");
              }),
              6);
}

TEST(DecodeTest, whatWasEncodedDecodes)
{
    for (int day = 0; day < 4000; day += 37) {
        const Record record{u"9"_s + QString::number(day), at(2009, 3, 5, 14, 7, 9).addDays(day),
                            u"Mensagem "_s + QString::number(day)};
        EXPECT_EQ(QueueDropFile::decode(QueueDropFile::encode(record)), record);
    }
}

TEST(DecodeTest, spacesAroundTheTextAreLostOnTheWay)
{
    const Record record{u" 9 1-2"_s, at(2009, 3, 5), u"  hola  "_s};
    EXPECT_EQ(QueueDropFile::decode(QueueDropFile::encode(record)),
              (Record{u"912"_s, at(2009, 3, 5), u"hola"_s}));
}

} // namespace

} // namespace norvane
