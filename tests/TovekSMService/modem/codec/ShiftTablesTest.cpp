#include "TovekSMService/modem/codec/ShiftTables.h"

#include "TovekSMService/modem/codec/GsmAlphabet.h"

#include <gtest/gtest.h>

#include <QSet>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr GsmLanguage languages[] = {GsmLanguage::Default, GsmLanguage::Spanish,
                                     GsmLanguage::Portuguese};

/// Every character that a language's tables hold, each once.
QSet<char16_t> charactersOf(GsmLanguage language)
{
    QSet<char16_t> found;
    for (quint8 septet = 0; septet < 128; ++septet) {
        found.insert(ShiftTables::locking(language, septet));
        found.insert(ShiftTables::single(language, septet));
    }
    found.remove(ShiftTables::none);
    return found;
}

} // namespace

TEST(ShiftTables, noLockingTableHoldsACharacterTwice)
{
    for (const GsmLanguage language : languages) {
        QSet<char16_t> found;
        for (quint8 septet = 0; septet < 128; ++septet)
            found.insert(ShiftTables::locking(language, septet));
        EXPECT_EQ(found.size(), 128);
        EXPECT_EQ(ShiftTables::locking(language, 0x1B), ShiftTables::none);
    }
}

TEST(ShiftTables, eachLanguageHoldsItsLetters)
{
    const auto holds = [](GsmLanguage language, const QString &letters) {
        const QSet<char16_t> characters = charactersOf(language);
        for (const QChar letter : letters)
            EXPECT_TRUE(characters.contains(letter.unicode())) << QString(letter).toStdString();
    };
    holds(GsmLanguage::Spanish, u"áéíóúüñÁÉÍÓÚÜÑ¿¡ç€"_s);
    holds(GsmLanguage::Portuguese, u"áàâãéêíóôõúüçÁÀÂÃÉÊÍÓÔÕÚÜÇªº€"_s);
}

TEST(ShiftTables, spanishHasNoLockingTableOfItsOwn)
{
    for (quint8 septet = 0; septet < 128; ++septet)
        EXPECT_EQ(ShiftTables::locking(GsmLanguage::Spanish, septet),
                  ShiftTables::locking(GsmLanguage::Default, septet));
}

TEST(ShiftTables, noSeptetLiesBeyondTheTables)
{
    EXPECT_EQ(ShiftTables::locking(GsmLanguage::Portuguese, 128), ShiftTables::none);
    EXPECT_EQ(ShiftTables::single(GsmLanguage::Spanish, 255), ShiftTables::none);
}

TEST(ShiftTables, anEscapeBeforeWhatTheTableDoesNotHoldIsTheCharacterItself)
{
    EXPECT_EQ(GsmAlphabet::fromSeptets("\x1B\x62"_ba), u"b"_s);
    EXPECT_EQ(GsmAlphabet::fromSeptets("\x1B\x1B"_ba), u" "_s);
    EXPECT_EQ(GsmAlphabet::fromSeptets("a\x1B"_ba), u"a "_s);
}

TEST(ShiftTables, whatWeSendIsReadAsItWas)
{
    QString text;
    for (char16_t unit = 0; unit < 0xFFFF; ++unit)
        if (GsmAlphabet::septetCount(unit) > 0)
            text += QChar(unit);
    ASSERT_EQ(text.size(), 127 + 10);
    const QByteArray septets = GsmAlphabet::toSeptets(text).value();
    EXPECT_EQ(GsmAlphabet::fromSeptets(septets), text);
    EXPECT_EQ(GsmAlphabet::unpack(GsmAlphabet::pack(septets), septets.size()), septets);
}

TEST(ShiftTables, unpackingGivesNoMoreThanTheOctetsHold)
{
    EXPECT_EQ(GsmAlphabet::unpack(QByteArray(1, '\x41'), 9), "A"_ba);
    EXPECT_EQ(GsmAlphabet::unpack(QByteArray(7, '\0'), 7), QByteArray(7, '\0'))
        << "seven septets leave filling that is no eighth";
    EXPECT_EQ(GsmAlphabet::unpack(QByteArray(100, '\x7F'), 1).size(), 1);
}

} // namespace norvane
