#include "NorvaneSMS/console/PhoneEdit.h"

#include <QApplication>
#include <QClipboard>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QTest>

#include <gtest/gtest.h>

TEST(KeyFilter, digitsPlusBackspaceAndReturnPass)
{
    for (const QChar character : QStringLiteral("0123456789+\b\r"))
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
    for (const QString &typed : {QStringLiteral("\u200F"), QStringLiteral("\uE000"),
                                 QStringLiteral("\U0001F600"), QStringLiteral("1a")}) {
        const QKeyEvent event(QEvent::KeyPress, Qt::Key_unknown, Qt::NoModifier, typed);
        EXPECT_TRUE(PhoneKeys::swallows(event)) << typed.toStdString();
    }
}

TEST(KeyFilter, aKeyOfTheKeypadTypesWithControlToo)
{
    const QKeyEvent minus(QEvent::KeyPress, Qt::Key_Minus, Qt::ControlModifier | Qt::KeypadModifier,
                          QStringLiteral("-"));
    EXPECT_TRUE(PhoneKeys::swallows(minus));
}

TEST(KeyFilter, typedCharactersAreFilteredInTheBox)
{
    PhoneEdit box;
    QTest::keyClicks(&box, QStringLiteral("+34 91-2a3(4)"));
    EXPECT_EQ(box.text(), QStringLiteral("+3491234"));
}

TEST(KeyFilter, arrowsDeleteBackspaceAndHomePass)
{
    PhoneEdit box;
    QTest::keyClicks(&box, QStringLiteral("12345"));
    QTest::keyClick(&box, Qt::Key_Backspace);
    QTest::keyClick(&box, Qt::Key_Home);
    QTest::keyClick(&box, Qt::Key_Right);
    QTest::keyClick(&box, Qt::Key_Delete);
    EXPECT_EQ(box.text(), QStringLiteral("134"));
    EXPECT_EQ(box.cursorPosition(), 1);
}

TEST(KeyFilter, pastingIsNotFiltered)
{
    PhoneEdit box;
    QApplication::clipboard()->setText(QStringLiteral("912-345"));
    QTest::keyClick(&box, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(box.text(), QStringLiteral("912-345"));
}

TEST(KeyFilter, copyAndCutPass)
{
    PhoneEdit box;
    box.setText(QStringLiteral("912345"));
    box.selectAll();
    QTest::keyClick(&box, Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(box.text(), QString());
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("912345"));
}

TEST(KeyFilter, tabMovesTheFocusOn)
{
    const QKeyEvent tab(QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier, QStringLiteral("\t"));
    EXPECT_FALSE(PhoneKeys::swallows(tab));
}

TEST(KeyFilter, whatAnInputMethodTypesIsFilteredToo)
{
    PhoneEdit box;
    QInputMethodEvent typed;
    typed.setCommitString(QStringLiteral("9á1"));
    QApplication::sendEvent(&box, &typed);
    EXPECT_EQ(box.text(), QStringLiteral("91"));
}

TEST(KeyFilter, thereIsNoLimitOfLength)
{
    PhoneEdit box;
    box.setText(QString(100'000, u'1'));
    EXPECT_EQ(box.text().size(), 100'000);
}
