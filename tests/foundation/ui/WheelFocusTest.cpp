#include "foundation/ui/WheelFocus.h"

#include <QApplication>
#include <QComboBox>
#include <QDateEdit>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QTimeEdit>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QtTest/qtestspontaneevent.h>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const QDate today(2026, 11, 20);

/// A window of boxes, below which it can be scrolled.
class WheelFocusTest : public ::testing::Test
{
protected:
    WheelFocusTest()
        : content(new QWidget), other(new QLineEdit), date(new QDateEdit(today)),
          time(new QTimeEdit(QTime(9, 30, 15))), list(new QComboBox)
    {
        list->addItems({u"one"_s, u"two"_s, u"three"_s});
        list->setCurrentIndex(1);
        auto *const layout = new QVBoxLayout(content);
        for (QWidget *const control : std::initializer_list<QWidget *>{other, date, time, list})
            layout->addWidget(control);
        content->setMinimumHeight(2000);
        area.setWidget(content);
        area.setWidgetResizable(true);
        area.resize(300, 300);
        area.show();
        QApplication::setActiveWindow(&area);
        other->setFocus();
        QCoreApplication::processEvents();
    }

    static void turn(QWidget *widget, int steps)
    {
        const QPointF place = widget->rect().center();
        QWheelEvent event(place, widget->mapToGlobal(place), {}, {0, steps * 120}, Qt::NoButton,
                          Qt::NoModifier, Qt::NoScrollPhase, false);
        // As one that comes from outside: it goes to what lies below, and may give the focus.
        QSpontaneKeyEvent::setSpontaneous(&event);
        qApp->notify(widget, &event);
    }

    QScrollArea area;
    QWidget *content;
    QLineEdit *other;
    QDateEdit *date;
    QTimeEdit *time;
    QComboBox *list;
};

TEST_F(WheelFocusTest, aBoxWithoutTheFocusIsNotChangedAndTakesNoFocus)
{
    for (QWidget *const box : std::initializer_list<QWidget *>{date, time, list}) {
        turn(box, -1);
        turn(box, 1);
        turn(box, -1);
        EXPECT_TRUE(other->hasFocus());
    }
    EXPECT_EQ(date->date(), today);
    EXPECT_EQ(time->time(), QTime(9, 30, 15));
    EXPECT_EQ(list->currentIndex(), 1);
}

TEST_F(WheelFocusTest, theWindowBelowABoxWithoutTheFocusIsScrolled)
{
    turn(date, -1);
    EXPECT_GT(area.verticalScrollBar()->value(), 0);
}

TEST_F(WheelFocusTest, aBoxThatHasTheFocusListens)
{
    date->setFocus();
    turn(date, 1);
    EXPECT_NE(date->date(), today);
    time->setFocus();
    turn(time, 1);
    EXPECT_NE(time->time(), QTime(9, 30, 15));
    list->setFocus();
    turn(list, -1);
    EXPECT_EQ(list->currentIndex(), 2);
}

TEST_F(WheelFocusTest, aPressAndTabStillGiveABoxTheFocus)
{
    QTest::keyClick(other, Qt::Key_Tab);
    EXPECT_TRUE(date->hasFocus());
    QTest::mouseClick(list, Qt::LeftButton);
    list->hidePopup();
    EXPECT_TRUE(list->hasFocus());
}

} // namespace

} // namespace norvane
