#include "NorvaneHistory/SteadyTableView.h"

#include "support/WaitUntil.h"

#include <QScrollBar>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class SteadyTableViewTest : public ::testing::Test
{
protected:
    SteadyTableViewTest()
    {
        for (int row = 0; row < 100; ++row)
            model.appendRow(new QStandardItem(QString::number(row)));
        view.setModel(&model);
        view.resize(200, 200);
        view.show();
        view.scrollToTop();
    }

    QString firstSeen() const { return model.index(view.firstVisibleRow(), 0).data().toString(); }
    void insertAtTop(const QString &text) { model.insertRow(0, new QStandardItem(text)); }

    QStandardItemModel model;
    SteadyTableView view{u"list"_s};
};

TEST_F(SteadyTableViewTest, theTopIsFollowedWhileNobodyReads)
{
    insertAtTop(u"new"_s);
    EXPECT_EQ(firstSeen(), u"new"_s);
}

TEST_F(SteadyTableViewTest, whatOneReadsStaysWhenRowsComeAbove)
{
    view.verticalScrollBar()->setValue(20);
    ASSERT_EQ(firstSeen(), u"20"_s);
    insertAtTop(u"new"_s);
    insertAtTop(u"newer"_s);
    EXPECT_EQ(firstSeen(), u"20"_s);
}

TEST_F(SteadyTableViewTest, aChosenRowHoldsTheTopToo)
{
    view.setCurrentIndex(model.index(1, 0));
    insertAtTop(u"new"_s);
    EXPECT_EQ(firstSeen(), u"0"_s);
    EXPECT_EQ(view.currentIndex().data().toString(), u"1"_s);
}

TEST_F(SteadyTableViewTest, whatOneReadsStaysWhenRowsLeaveAbove)
{
    view.verticalScrollBar()->setValue(20);
    model.removeRows(3, 2);
    EXPECT_EQ(firstSeen(), u"20"_s);
    model.removeRows(16, 6); // 18 to 23: of which two stood above
    EXPECT_EQ(firstSeen(), u"24"_s);
}

TEST_F(SteadyTableViewTest, rowsBelowMoveNothing)
{
    view.verticalScrollBar()->setValue(20);
    model.insertRow(50, new QStandardItem(u"new"_s));
    model.removeRows(60, 5);
    EXPECT_EQ(firstSeen(), u"20"_s);
}

TEST_F(SteadyTableViewTest, aChosenRowThatGoesIsFollowedByNone)
{
    view.setCurrentIndex(model.index(5, 0));
    QSignalSpy chosen(&view, &SteadyTableView::rowChosen);
    model.removeRow(5);
    EXPECT_FALSE(view.currentIndex().isValid());
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.at(0).at(0).toInt(), -1);
}

TEST_F(SteadyTableViewTest, whoPassesThroughChoosesNothing)
{
    QSignalSpy chosen(&view, &SteadyTableView::rowChosen);
    view.activateWindow();
    view.setFocus(Qt::TabFocusReason);
    ASSERT_TRUE(waitUntil([&] { return view.hasFocus(); }));
    EXPECT_FALSE(view.currentIndex().isValid());
    EXPECT_EQ(chosen.count(), 0);
    QTest::keyClick(&view, Qt::Key_Down);
    EXPECT_EQ(view.currentIndex().row(), 0);
}

TEST_F(SteadyTableViewTest, keysGoFromRowToRowAndToBothEnds)
{
    view.setFocus();
    view.setCurrentIndex(model.index(5, 0));
    QTest::keyClick(&view, Qt::Key_Down);
    EXPECT_EQ(view.currentIndex().row(), 6);
    QTest::keyClick(&view, Qt::Key_End);
    EXPECT_EQ(view.currentIndex().row(), 99);
    QTest::keyClick(&view, Qt::Key_Home);
    EXPECT_EQ(view.currentIndex().row(), 0);
}

} // namespace

} // namespace norvane
