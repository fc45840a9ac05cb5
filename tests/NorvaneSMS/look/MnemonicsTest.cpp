#include "NorvaneSMS/look/WindowsFixture.h"
#include "support/WaitUntil.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeySequence>
#include <QLabel>
#include <QLineEdit>
#include <QMap>
#include <QTest>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// What Alt and a letter reach.
struct Reached
{
    QString control;
    QString text;
};

QList<Reached> reachedIn(const QWidget &window)
{
    QList<Reached> found;
    for (const auto *const button : window.findChildren<QAbstractButton *>())
        found.append({button->objectName(), button->text()});
    for (const auto *const label : window.findChildren<QLabel *>())
        found.append({label->objectName(), label->text()});
    return found;
}

bool hasMnemonic(const QString &text)
{
    return !QKeySequence::mnemonic(text).isEmpty();
}

class MnemonicsTest : public WindowsFixture, public ::testing::WithParamInterface<const char *>
{
protected:
    MnemonicsTest() { speak(QLatin1String(GetParam())); }
};

INSTANTIATE_TEST_SUITE_P(Each, MnemonicsTest, ::testing::Values("ESN", "CAT", "PTG"),
                         [](const auto &language) { return std::string(language.param); });

TEST_P(MnemonicsTest, noTwoControlsOfAWindowShareALetter)
{
    int windows = 0;
    inEveryWindow([&](const QWidget &window) {
        QMap<QKeySequence, QString> taken;
        for (const Reached &reached : reachedIn(window)) {
            if (!hasMnemonic(reached.text))
                continue;
            const QKeySequence keys = QKeySequence::mnemonic(reached.text);
            EXPECT_FALSE(taken.contains(keys))
                << qPrintable(reached.control + u" and "_s + taken.value(keys));
            taken.insert(keys, reached.control);
        }
        EXPECT_GE(taken.size(), 5);
        ++windows;
    });
    EXPECT_EQ(windows, 3);
}

TEST_P(MnemonicsTest, everyCaptionOfALanguageFileThatCanHasALetter)
{
    // The captions that no language file has, and the label of a list that is never enabled.
    const QStringList without = {u"opServer"_s, u"opClient"_s, u"Label1"_s, u"lblDeviceType"_s};
    inEveryWindow([&](const QWidget &window) {
        for (const auto *const button : window.findChildren<QAbstractButton *>()) {
            if (!button->text().isEmpty()) {
                EXPECT_EQ(hasMnemonic(button->text()), !without.contains(button->objectName()))
                    << qPrintable(button->objectName());
            }
        }
        for (const auto *const label : window.findChildren<QLabel *>()) {
            const bool expected = label->buddy() && !without.contains(label->objectName());
            EXPECT_EQ(hasMnemonic(label->text()), expected) << qPrintable(label->objectName());
        }
    });
}

class MnemonicKeys : public WindowsFixture
{
protected:
    void SetUp() override
    {
        loadAsServer();
        show();
        QApplication::setActiveWindow(console.get());
    }
};

TEST_F(MnemonicKeys, altAndTheLetterOfALabelReachItsField)
{
    control("btnSend")->setFocus();
    QTest::keyClick(console.get(), Qt::Key_T, Qt::AltModifier);
    EXPECT_EQ(QApplication::focusWidget(), control("txtPhone"));
    QTest::keyClick(console.get(), Qt::Key_F, Qt::AltModifier);
    EXPECT_EQ(QApplication::focusWidget(), control("dtDeliveryDate"));
}

TEST_F(MnemonicKeys, altAndTheLetterOfAButtonPressIt)
{
    control<QLineEdit>("txtPhone")->setText(u"912345678"_s);
    QTest::keyClick(console.get(), Qt::Key_E, Qt::AltModifier);
    // The button shows itself pressed for a moment first.
    EXPECT_TRUE(waitUntil([this] { return !script.calls.filter(u"AddSMS"_s).isEmpty(); }));
}

TEST_F(MnemonicKeys, returnPressesTheButtonThatHasTheFocusAndNoOther)
{
    control<QLineEdit>("txtPhone")->setText(u"912345678"_s);
    QTest::keyClick(control("txtPhone"), Qt::Key_Return);
    EXPECT_TRUE(takeCalls().filter(u"AddSMS"_s).isEmpty());
    control("btnSend")->setFocus();
    QTest::keyClick(control("btnSend"), Qt::Key_Return);
    EXPECT_FALSE(takeCalls().filter(u"AddSMS"_s).isEmpty());
}

} // namespace

} // namespace norvane
