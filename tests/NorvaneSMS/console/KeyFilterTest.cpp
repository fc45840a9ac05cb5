#include "foundation/ui/PhoneEdit.h"

#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QTest>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

TEST(KeyFilter, digitsPlusBackspaceAndReturnPass)
{
    for (const QChar character : u"0123456789+\b\r"_s)
        EXPECT_TRUE(PhoneKeys::passes(character)) << int(character.unicode());
}

TEST(KeyFilter, everyOtherCharacterIsSwallowed)
{
    for (char16_t character = 0x20; character < 0x250; ++character) {
        const bool mayEnter = (character >= u'0' && character <= u'9') || character == u'+';
        EXPECT_EQ(PhoneKeys::passes(character), mayEnter) << int(character);
    }
    EXPECT_FALSE(PhoneKeys::passes(u'\u0661')) << "an Arabic digit";
}

TEST(KeyFilter, invisibleAndDoubleCharactersAreSwallowedToo)
{
    for (const QString &typed : {u"\u200F"_s, u"\uE000"_s, u"\U0001F600"_s, u"1a"_s}) {
        const QKeyEvent event(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, typed);
        EXPECT_TRUE(PhoneKeys::swallows(event)) << typed.toStdString();
    }
}

TEST(KeyFilter, aKeyOfTheKeypadTypesWithControlToo)
{
    const QKeyEvent minus(QEvent::KeyPress, Qt::Key_Minus, Qt::ControlModifier | Qt::KeypadModifier,
                          u"-"_s);
    EXPECT_TRUE(PhoneKeys::swallows(minus));
}

TEST(KeyFilter, typedCharactersAreFilteredInTheBox)
{
    PhoneEdit box;
    QTest::keyClicks(&box, u"+34 91-2a3(4)"_s);
    EXPECT_EQ(box.text(), u"+3491234"_s);
}

TEST(KeyFilter, arrowsDeleteBackspaceAndHomePass)
{
    PhoneEdit box;
    QTest::keyClicks(&box, u"12345"_s);
    QTest::keyClick(&box, Qt::Key_Backspace);
    QTest::keyClick(&box, Qt::Key_Home);
    QTest::keyClick(&box, Qt::Key_Right);
    QTest::keyClick(&box, Qt::Key_Delete);
    EXPECT_EQ(box.text(), u"134"_s);
    EXPECT_EQ(box.cursorPosition(), 1);
}

TEST(KeyFilter, pastingIsNotFiltered)
{
    PhoneEdit box;
    QApplication::clipboard()->setText(u"912-345"_s);
    QTest::keyClick(&box, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(box.text(), u"912-345"_s);
}

TEST(KeyFilter, copyAndCutPass)
{
    PhoneEdit box;
    box.setText(u"912345"_s);
    box.selectAll();
    QTest::keyClick(&box, Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(box.text(), QString());
    EXPECT_EQ(QApplication::clipboard()->text(), u"912345"_s);
}

TEST(KeyFilter, tabMovesTheFocusOn)
{
    const QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier, u"\t"_s);
    EXPECT_FALSE(PhoneKeys::swallows(tab));
}

TEST(KeyFilter, whatAnInputMethodTypesIsFilteredToo)
{
    PhoneEdit box;
    QInputMethodEvent typed;
    typed.setCommitString(u"9á1"_s);
    QApplication::sendEvent(&box, &typed);
    EXPECT_EQ(box.text(), u"91"_s);
}

TEST(KeyFilter, thereIsNoLimitOfLength)
{
    PhoneEdit box;
    box.setText(QString(100'000, u'1'));
    EXPECT_EQ(box.text().size(), 100'000);
}

} // namespace norvane
