#include "NorvaneHistory/HistoryModel.h"

#include "NorvaneHistory/FakeSource.h"
#include "support/LoadedLanguage.h"
#include "support/WaitUntil.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int pageRows = static_cast<int>(HistoryModel::pageRows);

class HistoryModelTest : public ::testing::Test
{
protected:
    void load(int rows)
    {
        source.addRows(rows);
        model.reload();
        ASSERT_TRUE(waitUntil([&] { return model.rowCount() == std::min(rows, pageRows); }));
    }

    QList<qint64> ids(int count) const
    {
        QList<qint64> found;
        for (int row = 0; row < std::min(count, model.rowCount()); ++row)
            found.append(model.row(row) ? model.row(row)->id : 0);
        return found;
    }

    void fetchAll(int rows)
    {
        ASSERT_TRUE(waitUntil([&] {
            model.fetchMore({});
            return model.rowCount() >= rows;
        }));
    }

    LoadedLanguage language{u"ESN"_s};
    FakeSource source;
    HistoryModel model{source};
    QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

TEST_F(HistoryModelTest, firstPageIsShown)
{
    load(pageRows + 10);
    EXPECT_EQ(ids(2), (QList<qint64>{pageRows + 10, pageRows + 9}));
    EXPECT_FALSE(model.isComplete());
}

TEST_F(HistoryModelTest, scrollingFetchesThePagesBehindIt)
{
    constexpr int count = 3 * pageRows + 10;
    load(count);
    fetchAll(count);
    EXPECT_FALSE(model.canFetchMore({}));
    EXPECT_EQ(model.row(count - 1)->id, 1);
}

TEST_F(HistoryModelTest, aPageThatWasLetGoIsFetchedAgainWhenItIsSeen)
{
    constexpr int count = 40 * pageRows;
    load(count);
    fetchAll(count);
    constexpr int row = 5 * pageRows + 3;
    EXPECT_EQ(model.data(model.index(row, HistoryModel::Moment), Qt::DisplayRole).toString(),
              u"…"_s);
    ASSERT_TRUE(waitUntil([&] { return model.row(row) != nullptr; }));
    EXPECT_EQ(model.row(row)->id, count - row);
    EXPECT_EQ(model.rowCount(), count);
}

TEST_F(HistoryModelTest, aPageThatIsFetchedAgainMayHaveLostRows)
{
    constexpr int count = 40 * pageRows;
    load(count);
    fetchAll(count);
    constexpr int row = 5 * pageRows + 3;
    source.rows.removeIf([](const HistoryRow &each) { return each.id == count - row; });
    ASSERT_EQ(model.row(row), nullptr);
    ASSERT_TRUE(waitUntil([&] { return model.row(row) != nullptr; }));
    EXPECT_EQ(model.rowCount(), count - 1);
    EXPECT_EQ(model.row(row)->id, count - row - 1);
}

TEST_F(HistoryModelTest, whatIsNewAppearsAtTheTopAndTheRestStays)
{
    load(20);
    const QPersistentModelIndex kept = model.index(4, 0);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    source.addRow(MessageState::Waiting, u"1"_s, u"new"_s);
    source.addRow(MessageState::Waiting, u"2"_s, u"newer"_s);
    model.refresh();
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() == 22; }));
    EXPECT_EQ(ids(3), (QList<qint64>{22, 21, 20}));
    EXPECT_EQ(kept.row(), 6);
    EXPECT_EQ(resets.count(), 0);
}

TEST_F(HistoryModelTest, aMessageThatLeavesTheQueueMovesToTheTop)
{
    load(20);
    HistoryRow sent = source.rows.takeAt(10);
    sent.state = MessageState::Failed;
    sent.id = sent.id; // the same message
    source.rows.prepend(sent);
    model.refresh();
    ASSERT_TRUE(waitUntil([&] { return model.row(0)->id == sent.id; }));
    EXPECT_EQ(model.rowCount(), 20);
    EXPECT_EQ(model.row(0)->state, MessageState::Failed);
    EXPECT_EQ(ids(20).count(sent.id), 1);
}

TEST_F(HistoryModelTest, aChangedStateIsShownInPlace)
{
    load(20);
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    source.rows[7].state = MessageState::Delivered;
    model.refresh();
    ASSERT_TRUE(waitUntil([&] { return changes.count() > 0; }));
    EXPECT_EQ(model.row(7)->state, MessageState::Delivered);
    EXPECT_EQ(changes.at(0).at(0).toModelIndex().row(), 7);
}

TEST_F(HistoryModelTest, aRowFarBelowIsBroughtUpToDateWhenItIsSeen)
{
    constexpr int count = 3 * pageRows;
    load(count);
    fetchAll(count);
    source.rows[2 * pageRows].state = MessageState::Delivered;
    model.refreshRows(2 * pageRows - 1, 2 * pageRows + 1);
    ASSERT_TRUE(
        waitUntil([&] { return model.row(2 * pageRows)->state == MessageState::Delivered; }));
}

TEST_F(HistoryModelTest, aRowFarBelowThatMovedOnIsTakenOut)
{
    constexpr int count = 3 * pageRows;
    load(count);
    fetchAll(count);
    const qint64 id = source.rows.at(2 * pageRows).id;
    source.rows[2 * pageRows].at = u"2026-12-31T00:00:00"_s;
    model.refreshRows(2 * pageRows, 2 * pageRows);
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() == count - 1; }));
    EXPECT_FALSE(model.rowOf(id));
}

TEST_F(HistoryModelTest, aGapAtTheTopBeginsTheListAnew)
{
    load(20);
    for (int i = 0; i < 2 * pageRows; ++i)
        source.addRow(MessageState::Waiting, u"1"_s, u"new"_s);
    model.refresh();
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() == pageRows; }));
    EXPECT_EQ(model.row(0)->id, 20 + 2 * pageRows);
    fetchAll(20 + 2 * pageRows);
    EXPECT_EQ(model.row(model.rowCount() - 1)->id, 1);
}

TEST_F(HistoryModelTest, anEmptyListShowsItsFirstRow)
{
    load(0);
    source.addRow(MessageState::Waiting, u"1"_s, u"first"_s);
    model.refresh();
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() == 1; }));
}

TEST_F(HistoryModelTest, anAnswerToAFormerFilterIsDropped)
{
    load(20);
    source.hold();
    HistoryFilter filter;
    filter.text = u"text 1"_s;
    model.setFilter(filter);
    filter.text = u"text 20"_s;
    model.setFilter(filter);
    source.release();
    ASSERT_EQ(model.rowCount(), 1);
    EXPECT_EQ(model.row(0)->text, u"text 20"_s);
}

TEST_F(HistoryModelTest, theSameFilterIsAskedForOnce)
{
    load(5);
    source.calls.clear();
    model.setFilter(model.filter());
    EXPECT_TRUE(source.calls.isEmpty());
}

TEST_F(HistoryModelTest, aFailureLeavesTheRows)
{
    load(20);
    source.isAway = true;
    QSignalSpy answers(&model, &HistoryModel::reloadFailed);
    model.reload();
    ASSERT_TRUE(waitUntil([&] { return answers.count() == 1; }));
    EXPECT_EQ(model.rowCount(), 20);
    source.isAway = false;
    source.addRow(MessageState::Waiting, u"1"_s, u"new"_s);
    model.refresh();
    EXPECT_TRUE(waitUntil([&] { return model.rowCount() == 21; }));
}

TEST_F(HistoryModelTest, changesDuringALookAreLookedAtBehindIt)
{
    load(5);
    source.hold();
    model.refresh();
    source.addRow(MessageState::Waiting, u"1"_s, u"new"_s);
    model.refresh();
    model.refresh();
    source.release();
    EXPECT_TRUE(waitUntil([&] { return model.rowCount() == 6; }));
}

TEST_F(HistoryModelTest, stateIsAWordAndADrawing)
{
    source.addRow(MessageState::InDoubt, u"600"_s, u"x"_s);
    load(0);
    model.refresh();
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() == 1; }));
    const QModelIndex cell = model.index(0, HistoryModel::State);
    EXPECT_EQ(cell.data().toString(), u"En duda"_s);
    EXPECT_FALSE(cell.data(Qt::DecorationRole).value<QIcon>().isNull());
    EXPECT_EQ(model.headerData(HistoryModel::State, Qt::Horizontal, Qt::DisplayRole).toString(),
              u"Estado"_s);
}

} // namespace

} // namespace norvane
