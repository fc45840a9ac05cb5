#include "NorvaneHistory/SteadyTableView.h"

#include "support/WaitUntil.h"

#include <QScrollBar>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QStringListModel>
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

TEST_F(SteadyTableViewTest, whatOneReadsStaysWhenRowsMoveOverIt)
{
    QStringList texts;
    for (int row = 0; row < 100; ++row)
        texts << QString::number(row);
    QStringListModel movable(texts);
    view.setModel(&movable);
    view.verticalScrollBar()->setValue(20);
    const auto firstSeenText = [&] { return movable.index(view.firstVisibleRow()).data(); };
    ASSERT_EQ(firstSeenText(), u"20"_s);
    movable.moveRow({}, 50, {}, 0);
    EXPECT_EQ(firstSeenText(), u"20"_s);
    movable.moveRow({}, 10, {}, 5);
    EXPECT_EQ(firstSeenText(), u"20"_s);
    movable.moveRow({}, 3, {}, 60);
    EXPECT_EQ(firstSeenText(), u"20"_s);
    view.setCurrentIndex(movable.index(22));
    movable.moveRow({}, 22, {}, 0);
    EXPECT_EQ(view.currentIndex().row(), 0);
    EXPECT_EQ(firstSeenText(), u"20"_s);
    view.setModel(&model);
}

TEST_F(SteadyTableViewTest, aChosenRowThatIsKnownLaterIsChosenAgain)
{
    view.setCurrentIndex(model.index(5, 0));
    QSignalSpy chosen(&view, &SteadyTableView::rowChosen);
    model.item(6)->setText(u"other"_s);
    EXPECT_EQ(chosen.count(), 0);
    model.item(5)->setText(u"known"_s);
    ASSERT_EQ(chosen.count(), 1);
    EXPECT_EQ(chosen.at(0).at(0).toInt(), 5);
}

/// A list that has more rows than it gives.
class LongModel : public QStringListModel
{
public:
    using QStringListModel::QStringListModel;
    bool canFetchMore(const QModelIndex &) const override { return true; }
    void fetchMore(const QModelIndex &) override { ++fetches; }
    int fetches = 0;
};

TEST_F(SteadyTableViewTest, rowsAreFetchedBeforeTheEndIsReached)
{
    LongModel longModel(QStringList(1000, u"x"_s));
    view.setModel(&longModel);
    ASSERT_TRUE(waitUntil([&] { return view.verticalScrollBar()->maximum() > 850; }));
    longModel.fetches = 0; // as long as the view had no rows
    view.verticalScrollBar()->setValue(500);
    EXPECT_EQ(longModel.fetches, 0);
    view.verticalScrollBar()->setValue(850);
    EXPECT_EQ(longModel.fetches, 1);
    view.setModel(&model);
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
