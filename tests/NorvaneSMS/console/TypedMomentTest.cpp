#include "NorvaneSMS/console/ConsoleFixture.h"

#include "support/PressWays.h"
#include "support/WaitUntil.h"

#include <QApplication>
#include <QDateEdit>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QTimeEdit>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A date or a time that is half typed when its message is sent.
class TypedMoment : public ConsoleFixture, public ::testing::WithParamInterface<PressWay>
{
protected:
    void SetUp() override
    {
        loadAsServer();
        show();
        QApplication::setActiveWindow(console.get());
        control<QLineEdit>("txtPhone")->setText(u"1"_s);
        takeCalls();
    }

    /// Types `keys` over one section of a box, whose focus stays there.
    void typeInto(const char *name, QDateTimeEdit::Section section, const QString &keys)
    {
        auto *const box = control<QDateTimeEdit>(name);
        box->setFocus();
        box->setSelectedSection(section);
        QTest::keyClicks(box, keys);
        ASSERT_EQ(box->currentSection(), section) << "still typing in it";
    }
    /// What the engine is called with when the message is sent.
    QString sent()
    {
        press(control<QPushButton>("btnSend"), GetParam());
        EXPECT_TRUE(waitUntil([this] { return !script.calls.isEmpty(); }));
        return takeCalls().value(0);
    }
};

INSTANTIATE_TEST_SUITE_P(Each, TypedMoment, ::testing::ValuesIn(pressWays));

TEST_P(TypedMoment, aHalfTypedDayIsSentAsTheBoxShowsIt)
{
    typeInto("dtDeliveryDate", QDateTimeEdit::DaySection, u"2"_s);
    EXPECT_EQ(sent(), u"AddSMS(1||2026-11-02T09:30:15)"_s);
    EXPECT_EQ(control<QDateEdit>("dtDeliveryDate")->text(), u"02/11/2026"_s);
}

TEST_P(TypedMoment, aHalfTypedMonthIsSentAsTheBoxShowsIt)
{
    typeInto("dtDeliveryDate", QDateTimeEdit::MonthSection, u"1"_s);
    EXPECT_EQ(sent(), u"AddSMS(1||2026-01-20T09:30:15)"_s);
}

TEST_P(TypedMoment, aHalfTypedTimeIsSentAsTheBoxShowsIt)
{
    typeInto("tmDeliveryDate", QDateTimeEdit::HourSection, u"1"_s);
    EXPECT_EQ(sent(), u"AddSMS(1||2026-11-20T01:30:15)"_s);
    typeInto("tmDeliveryDate", QDateTimeEdit::MinuteSection, u"5"_s);
    EXPECT_EQ(sent(), u"AddSMS(1||2026-11-20T01:05:15)"_s);
    typeInto("tmDeliveryDate", QDateTimeEdit::SecondSection, u"0"_s);
    EXPECT_EQ(sent(), u"AddSMS(1||2026-11-20T01:05:00)"_s);
}

} // namespace

} // namespace norvane
