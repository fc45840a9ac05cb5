#include "foundation/ui/PressFocus.h"

#include "support/PressWays.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QFocusEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QToolButton>
#include <QVBoxLayout>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A field that notes when it is left.
class Field : public QLineEdit
{
public:
    explicit Field(QStringList &events) : m_events(events) {}

protected:
    void focusOutEvent(QFocusEvent *event) override
    {
        m_events.append(event->reason() == Qt::ActiveWindowFocusReason ? u"window left"_s
                                                                       : u"left"_s);
        QLineEdit::focusOutEvent(event);
    }

private:
    QStringList &m_events;
};

/// A window with a field that has the focus, and what happens in it.
class PressFocusTest : public ::testing::TestWithParam<PressWay>
{
protected:
    PressFocusTest() : field(new Field(events)) { window.setLayout(new QVBoxLayout); }

    template <typename Button>
    Button *add(const QString &text)
    {
        auto *const button = new Button(&window);
        button->setText(text);
        window.layout()->addWidget(button);
        QObject::connect(button, &QAbstractButton::clicked, &window,
                         [this] { events.append(u"acts"_s); });
        return button;
    }
    void show()
    {
        window.layout()->addWidget(field);
        window.show();
        QApplication::setActiveWindow(&window);
        field->setFocus();
        ASSERT_TRUE(field->hasFocus());
        events.clear();
    }
    bool acts() const
    {
        return waitUntil([this] { return events.contains(u"acts"_s); });
    }

    QStringList events;
    QWidget window;
    Field *field;
};

INSTANTIATE_TEST_SUITE_P(Each, PressFocusTest, ::testing::ValuesIn(pressWays));

TEST_P(PressFocusTest, theFieldIsLeftBeforeTheButtonActs)
{
    auto *const button = add<QPushButton>(u"&Go"_s);
    show();
    press(button, GetParam());
    EXPECT_TRUE(button->hasFocus()) << "at once";
    ASSERT_TRUE(acts());
    EXPECT_EQ(events, (QStringList{u"left"_s, u"acts"_s}));
    EXPECT_TRUE(button->hasFocus());
}

/// Keys go to the active window alone.
class PressWithoutKeys : public PressFocusTest
{};

INSTANTIATE_TEST_SUITE_P(Each, PressWithoutKeys,
                         ::testing::Values(PressWay::AssistiveTechnology, PressWay::Click));

TEST_P(PressWithoutKeys, theFieldOfAWindowThatIsNotActiveIsLeftToo)
{
    auto *const button = add<QPushButton>(u"&Go"_s);
    show();
    QApplication::setActiveWindow(nullptr);
    ASSERT_EQ(events, QStringList{u"window left"_s});
    events.clear();
    press(button, GetParam());
    ASSERT_TRUE(acts());
    EXPECT_EQ(events, (QStringList{u"left"_s, u"acts"_s}));
    EXPECT_EQ(window.focusWidget(), button);
}

TEST_P(PressFocusTest, anOptionButtonIsNoOtherButton)
{
    auto *const button = add<QRadioButton>(u"&One"_s);
    show();
    press(button, GetParam());
    ASSERT_TRUE(acts());
    EXPECT_EQ(events, (QStringList{u"left"_s, u"acts"_s}));
    EXPECT_TRUE(button->isChecked());
}

TEST_P(PressFocusTest, whatTheMouseGivesNoFocusGetsNoneByAnotherWay)
{
    auto *const button = add<QToolButton>(u"&Go"_s);
    ASSERT_EQ(button->focusPolicy(), Qt::TabFocus);
    show();
    press(button, GetParam());
    ASSERT_TRUE(acts());
    EXPECT_EQ(events, QStringList{u"acts"_s});
    EXPECT_TRUE(field->hasFocus());
}

TEST_P(PressFocusTest, aDisabledButtonTakesNoFocus)
{
    auto *const button = add<QPushButton>(u"&Go"_s);
    button->setEnabled(false);
    show();
    press(button, GetParam());
    EXPECT_TRUE(field->hasFocus());
    EXPECT_EQ(events, QStringList());
}

} // namespace

} // namespace norvane
