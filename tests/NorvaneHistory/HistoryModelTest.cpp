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

    /// Rows on top of all others.
    void addNew(int rows)
    {
        for (int i = 0; i < rows; ++i)
            source.addRow(MessageState::Waiting, u"1"_s, u"new"_s);
    }

    /// Each row has the id that follows from its place.
    void expectWhole(int count)
    {
        ASSERT_EQ(model.rowCount(), count);
        for (int row = 0; row < count; ++row) {
            ASSERT_TRUE(waitUntil([&] { return model.row(row) != nullptr; }));
            ASSERT_EQ(model.row(row)->id, count - row);
        }
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

TEST_F(HistoryModelTest, aRowFarBelowThatMovedOnGoesToItsPlaceAndStaysChosen)
{
    constexpr int count = 3 * pageRows;
    load(count);
    fetchAll(count);
    const qint64 id = source.rows.at(2 * pageRows).id;
    const QPersistentModelIndex chosen = model.index(2 * pageRows, 0);
    source.rows[2 * pageRows].at = source.rows.at(10).at;
    model.refreshRows(2 * pageRows, 2 * pageRows);
    ASSERT_TRUE(waitUntil([&] { return model.rowOf(id) == 10; }));
    EXPECT_EQ(chosen.row(), 10);
    EXPECT_EQ(model.row(10)->at, source.rows.at(10).at);
    EXPECT_EQ(model.rowCount(), count);
}

TEST_F(HistoryModelTest, aRowThatBecameWhatIsNotAskedForIsTakenOut)
{
    HistoryFilter filter;
    filter.states.setFlag(MessageState::Failed, false);
    model.setFilter(filter);
    load(20);
    source.rows[7].state = MessageState::Failed;
    model.refreshRows(7, 7);
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() == 19; }));
    EXPECT_FALSE(model.rowOf(source.rows.at(7).id));
}

TEST_F(HistoryModelTest, moreThanAPageOfNewRowsMovesNothingThatIsRead)
{
    constexpr int count = 3 * pageRows;
    constexpr int added = 2 * pageRows + 20;
    load(count);
    fetchAll(count);
    const QPersistentModelIndex kept = model.index(count - 1, 0);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    addNew(added);
    model.refresh();
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() == count + added; }));
    EXPECT_EQ(resets.count(), 0);
    EXPECT_EQ(kept.row(), count + added - 1);
    expectWhole(count + added);
}

TEST_F(HistoryModelTest, whatIsNewBeyondTheLimitIsFetchedWhenItIsSeen)
{
    constexpr int count = 3 * pageRows;
    constexpr int fetched = HistoryModel::maxTopPages * pageRows;
    constexpr int added = fetched + 2 * pageRows + 20;
    load(count);
    fetchAll(count);
    const QPersistentModelIndex kept = model.index(count - 1, 0);
    const QPersistentModelIndex first = model.index(0, 0);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    addNew(added);
    model.refresh();
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() > count; }));
    EXPECT_EQ(resets.count(), 0);
    EXPECT_EQ(model.row(fetched - 1)->id, count + added - fetched + 1);
    EXPECT_EQ(kept.row(), model.rowCount() - 1);
    EXPECT_EQ(model.row(kept.row())->id, 1);
    // The gap and what stood behind it.
    ASSERT_TRUE(waitUntil([&] {
        return model.row(first.row()) != nullptr && model.row(fetched) != nullptr &&
               model.rowCount() == count + added;
    }));
    EXPECT_EQ(model.row(first.row())->id, count);
    expectWhole(count + added);
}

TEST_F(HistoryModelTest, aTopThatShrankGoesOnInThePageThatWasLetGo)
{
    constexpr int count = 40 * pageRows;
    load(count);
    fetchAll(count);
    const QPersistentModelIndex kept = model.index(20 * pageRows, 0);
    const qint64 id = source.rows.at(20 * pageRows).id;
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    source.rows.remove(10, 20);
    model.refresh();
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() == count - 20; }));
    EXPECT_EQ(resets.count(), 0);
    EXPECT_EQ(kept.row(), 20 * pageRows - 20);
    EXPECT_EQ(model.rowOf(id), kept.row());
}

TEST_F(HistoryModelTest, manyRowsThatMoveToTheTopAtOnceLeaveTheOthersWhereTheyAre)
{
    constexpr int count = 4 * pageRows;
    constexpr int moved = pageRows + 10;
    load(count);
    fetchAll(count);
    const QPersistentModelIndex kept = model.index(10, 0);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    for (int i = 0; i < moved; ++i) {
        HistoryRow row = source.rows.takeAt(3 * pageRows - i + moved / 2 - 1);
        row.at = u"2026-12-31T%1"_s.arg(i, 4, 10, QChar(u'0'));
        row.state = MessageState::Failed;
        source.rows.prepend(row);
    }
    model.refresh();
    ASSERT_TRUE(waitUntil([&] { return model.row(0)->state == MessageState::Failed; }));
    EXPECT_EQ(kept.row(), moved + 10);
    EXPECT_EQ(resets.count(), 0);
    ASSERT_EQ(model.rowCount(), count);
    for (int row = 0; row < count; ++row)
        ASSERT_EQ(model.row(row)->id, source.rows.at(row).id) << row;
}

TEST_F(HistoryModelTest, aPageThatGrewBeyondItsLimitLosesNoRow)
{
    constexpr int count = 40 * pageRows;
    load(count);
    fetchAll(count);
    constexpr int row = 5 * pageRows + 3;
    const QPersistentModelIndex last = model.index(6 * pageRows - 1, 0);
    const qint64 lastId = source.rows.at(last.row()).id;
    QString at = source.rows.at(row).at;
    at.chop(2); // the seconds
    for (int second = 59; second >= 1; --second)
        source.rows.insert(row + 59 - second, {count + second,
                                               at + u"%1"_s.arg(second, 2, 10, QChar(u'0')),
                                               {},
                                               u"1"_s,
                                               u"late"_s,
                                               MessageState::Sent,
                                               1,
                                               {}});
    ASSERT_EQ(model.row(row), nullptr);
    ASSERT_TRUE(
        waitUntil([&] { return model.row(row) != nullptr && model.row(last.row()) != nullptr; }));
    EXPECT_EQ(model.rowCount(), count + 59);
    EXPECT_EQ(model.row(last.row())->id, lastId);
    for (int place = 5 * pageRows; place <= last.row(); ++place)
        ASSERT_EQ(model.row(place)->id, source.rows.at(place).id) << place;
}

TEST_F(HistoryModelTest, theChosenRowOfAPageThatIsFetchedAgainStaysTheSame)
{
    constexpr int count = 40 * pageRows;
    load(count);
    fetchAll(count);
    constexpr int row = 5 * pageRows + 30;
    const QPersistentModelIndex chosen = model.index(row, 0);
    const qint64 id = source.rows.at(row).id;
    source.rows.remove(5 * pageRows + 3, 7);
    ASSERT_EQ(model.row(row), nullptr);
    ASSERT_TRUE(waitUntil([&] { return model.row(chosen.row()) != nullptr; }));
    EXPECT_EQ(model.row(chosen.row())->id, id);
    EXPECT_EQ(chosen.row(), row - 7);
}

TEST_F(HistoryModelTest, aMessageThatIsSentStaysChosen)
{
    load(20);
    const QPersistentModelIndex chosen = model.index(10, 0);
    QSignalSpy removals(&model, &QAbstractItemModel::rowsAboutToBeRemoved);
    QSignalSpy changes(&model, &QAbstractItemModel::dataChanged);
    HistoryRow sent = source.rows.takeAt(10);
    sent.at = u"2026-12-31T00:00:00"_s;
    sent.state = MessageState::Delivered;
    source.rows.prepend(sent);
    model.refresh();
    ASSERT_TRUE(waitUntil([&] { return changes.count() > 0; }));
    EXPECT_EQ(chosen.row(), 0);
    EXPECT_EQ(removals.count(), 0);
    EXPECT_EQ(*model.row(0), sent);
}

TEST_F(HistoryModelTest, theTopIsLetGoAgainWhateverComes)
{
    constexpr int rounds = 5;
    constexpr int added = 7 * pageRows;
    load(pageRows);
    for (int round = 1; round <= rounds; ++round) {
        addNew(added);
        model.refresh();
        ASSERT_TRUE(waitUntil([&] { return model.rowCount() == pageRows + round * added; }));
    }
    const int row = model.rowCount() - 2 * pageRows;
    EXPECT_EQ(model.row(row), nullptr);
    ASSERT_TRUE(waitUntil([&] { return model.row(row) != nullptr; }));
    EXPECT_EQ(model.row(row)->id, source.rows.at(row).id);
}

TEST_F(HistoryModelTest, aPageThatWasAskedForBeforeTheListBeganAnewIsDropped)
{
    constexpr int count = 6 * pageRows;
    load(count);
    fetchAll(2 * pageRows);
    source.hold();
    model.reload();
    model.fetchMore({}); // behind the rows that are about to go
    source.release();
    ASSERT_EQ(model.rowCount(), pageRows);
    fetchAll(count);
    for (int row = 0; row < count; ++row)
        ASSERT_EQ(model.row(row)->id, count - row);
}

TEST_F(HistoryModelTest, aPageThatIsFetchedAgainIsDroppedIfTheListBeganAnew)
{
    constexpr int count = 40 * pageRows;
    load(count);
    fetchAll(count);
    source.hold();
    model.reload();
    ASSERT_EQ(model.row(7 * pageRows), nullptr); // is asked for
    source.release();
    EXPECT_EQ(model.rowCount(), pageRows);
    EXPECT_EQ(model.row(pageRows - 1)->id, count - pageRows + 1);
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

TEST_F(HistoryModelTest, changesDuringALoadDoNotDelayIt)
{
    source.addRows(20);
    source.hold();
    model.reload();
    source.addRow(MessageState::Waiting, u"1"_s, u"new"_s);
    model.refresh();
    model.refresh();
    source.release();
    EXPECT_EQ(model.rowCount(), 20);
    EXPECT_TRUE(waitUntil([&] { return model.rowCount() == 21; }));
    EXPECT_EQ(source.calls.count(u"history"_s), 2);
}

TEST_F(HistoryModelTest, rowsOfAFormerFilterAreNotMixedWithThoseOfTheNewOne)
{
    load(2 * pageRows);
    source.isAway = true;
    QSignalSpy answers(&model, &HistoryModel::reloadFailed);
    HistoryFilter filter;
    filter.text = u"text 10"_s;
    model.setFilter(filter);
    ASSERT_TRUE(waitUntil([&] { return answers.count() == 1; }));
    EXPECT_EQ(model.rowCount(), pageRows);
    EXPECT_FALSE(model.canFetchMore({}));
    source.isAway = false;
    model.refresh();
    ASSERT_TRUE(waitUntil([&] { return model.rowCount() < pageRows; }));
    EXPECT_EQ(ids(20), (QList<qint64>{109, 108, 107, 106, 105, 104, 103, 102, 101, 100, 10}));
}

TEST_F(HistoryModelTest, anotherFilterIsASearchAndTheSameOneIsNot)
{
    load(20);
    QSignalSpy searches(&model, &HistoryModel::searched);
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    model.reload();
    ASSERT_TRUE(waitUntil([&] { return resets.count() == 1; }));
    EXPECT_EQ(searches.count(), 0);
    HistoryFilter filter;
    filter.text = u"text 1"_s;
    model.setFilter(filter);
    ASSERT_TRUE(waitUntil([&] { return resets.count() == 2; }));
    EXPECT_EQ(searches.count(), 1);
}

TEST_F(HistoryModelTest, visibleRowsAreAskedForOneQuestionAtATime)
{
    load(50);
    source.hold();
    source.calls.clear();
    for (int row = 0; row < 20; ++row)
        model.refreshRows(row, row + 1);
    EXPECT_EQ(source.calls.count(u"rows"_s), 1);
    source.rows[20].state = MessageState::Delivered;
    source.release();
    // The last of them.
    EXPECT_TRUE(waitUntil([&] { return model.row(20)->state == MessageState::Delivered; }));
    EXPECT_EQ(source.calls.count(u"rows"_s), 2);
}

TEST_F(HistoryModelTest, rowsThatCannotBeFetchedAreReportedAndAskedForAgain)
{
    constexpr int count = 40 * pageRows;
    source.addRows(count);
    HistoryModel plain(source); // no tester fetches its rows
    plain.reload();
    ASSERT_TRUE(waitUntil([&] {
        if (plain.rowCount() < count - pageRows)
            plain.fetchMore({});
        return plain.rowCount() == count - pageRows;
    }));
    QSignalSpy failures(&plain, &HistoryModel::fetchFailed);
    QSignalSpy recoveries(&plain, &HistoryModel::recovered);
    source.isAway = true;
    plain.fetchMore({});
    ASSERT_TRUE(waitUntil([&] { return failures.count() == 1; }));
    plain.refresh();
    ASSERT_TRUE(waitUntil([&] { return failures.count() == 2; }));
    ASSERT_EQ(plain.row(7 * pageRows), nullptr);
    ASSERT_TRUE(waitUntil([&] { return failures.count() == 3; }));
    EXPECT_EQ(recoveries.count(), 0);
    source.isAway = false;
    ASSERT_TRUE(waitUntil([&] { return plain.row(7 * pageRows) != nullptr; }));
    plain.fetchMore({});
    ASSERT_TRUE(waitUntil([&] { return plain.rowCount() == count; }));
    EXPECT_EQ(recoveries.count(), 1);
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
