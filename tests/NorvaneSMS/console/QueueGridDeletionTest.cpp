#include "NorvaneSMS/console/QueueGridFixture.h"
#include "support/Allocations.h"

namespace norvane {

using namespace Qt::StringLiterals;

TEST_F(QueueGridTest, deleteDoesNothingOnAnEmptyQueue)
{
    showQueue(0);
    pressDelete();
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(QueueGridTest, deleteDoesNothingWithoutASelection)
{
    showQueue(3);
    grid()->setCurrentIndex(cell(2, 0));
    grid()->clearSelection();
    pressDelete();
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(QueueGridTest, deleteDoesNothingWithoutACurrentRow)
{
    showQueue(3);
    select({2, 3});
    grid()->selectionModel()->setCurrentIndex({}, QItemSelectionModel::NoUpdate);
    pressDelete();
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(QueueGridTest, answeringNoLeavesEveryRowAsItWas)
{
    boxes.yesNoAnswer = MessageBoxes::Answer::No;
    showQueue(3);
    select({1, 3});
    pressDelete();
    EXPECT_EQ(boxes.shown, QList{deleteQuestion()});
    EXPECT_EQ(phones(), u"601 602 603"_s);
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(QueueGridTest, rowsTwoAndFourGoTheLastOneFirst)
{
    showQueue(5);
    select({2, 4});
    pressDelete();
    EXPECT_EQ(phones(), u"601 603 605"_s);
    EXPECT_EQ(takeCalls(), (QStringList{status, status, update}));
    ASSERT_EQ(script.updates.size(), 1);
    EXPECT_EQ(script.updates.first().deletedIds(), (QList<qint64>{104, 102}));
    EXPECT_TRUE(script.updates.first().changedRows().isEmpty());
    EXPECT_EQ(boxes.shown, QList{deleteQuestion()});
    EXPECT_TRUE(grid()->hasFocus());
}

TEST_F(QueueGridTest, withTheEngineStoppedTheFirstRowIsDeletedLikeAnyOther)
{
    showQueue(2);
    select({1});
    pressDelete();
    EXPECT_EQ(phones(), u"602"_s);
    EXPECT_EQ(takeCalls(), (QStringList{status, update}));
}

TEST_F(QueueGridTest, noStatusButOneKeepsTheFirstRow)
{
    for (const qint32 engineStatus : {2, -1}) {
        script.status = engineStatus;
        showQueue(2);
        select({1});
        pressDelete();
        EXPECT_EQ(phones(), u"602"_s) << engineStatus;
        EXPECT_EQ(takeCalls(), (QStringList{status, update}));
    }
}

TEST_F(QueueGridTest, aSelectionWithTheMessageInProgressRemovesTheOthersAndShowsOneBox)
{
    script.status = 1;
    showQueue(4);
    select({1, 2, 3});
    QString whenTold;
    boxes.whileShown = [&] {
        if (boxes.shown.size() == 2)
            whenTold = phones();
    };
    pressDelete();
    EXPECT_EQ(boxes.shown, (QList{deleteQuestion(), exclamation(3760020)}));
    EXPECT_EQ(whenTold, u"601 604"_s) << "the others are gone by then";
    EXPECT_EQ(phones(), u"601 604"_s);
    EXPECT_EQ(takeCalls(), (QStringList{status, status, status, update}));
    EXPECT_EQ(script.updates.first().deletedIds(), (QList<qint64>{103, 102}));
}

TEST_F(QueueGridTest, theMessageInProgressAloneIsKeptAndTheQueueHandedBackAllTheSame)
{
    script.status = 1;
    showQueue(2);
    select({1});
    pressDelete();
    EXPECT_EQ(grid()->rows(), 2);
    EXPECT_EQ(takeCalls(), (QStringList{status, update}));
}

TEST_F(QueueGridTest, theStatusIsReadAfreshForEachRow)
{
    showQueue(3);
    script.statuses.append({1, 1, 0}); // stopped by the time that the first row is reached
    select({1, 2, 3});
    pressDelete();
    EXPECT_TRUE(phones().isEmpty());

    showQueue(3);
    script.statuses.append({0, 0, 1});
    select({1, 2, 3});
    pressDelete();
    EXPECT_EQ(phones(), u"601"_s);
}

TEST_F(QueueGridTest, changesOfTheQueueWaitUntilTheDeletionIsThrough)
{
    showQueue(4);
    select({2, 3});
    // While the question is open the first message is sent and another one comes in.
    boxes.whileShown = [&] {
        script.queue.removeFirst();
        changeQueue();
        script.queue.append(waiting(9));
        changeQueue();
    };
    pressDelete();
    EXPECT_EQ(script.updates.first().deletedIds(), (QList<qint64>{103, 102}))
        << "the rows that were selected, not those that stand there now";
    EXPECT_EQ(takeCalls(), (QStringList{status, status, update, u"GetQueue"_s}));
    EXPECT_EQ(ConsoleFixture::text("lblQueueSize"), GS(3760025, 4)) << "the last one's size";
    EXPECT_EQ(phones(), u"602 603 604 609"_s) << "as this engine answers";
}

TEST_F(QueueGridTest, changesThatWaitedAreShownAfterANoToo)
{
    boxes.yesNoAnswer = MessageBoxes::Answer::No;
    showQueue(2);
    select({2});
    boxes.whileShown = [&] {
        script.queue.removeFirst();
        changeQueue();
        EXPECT_EQ(grid()->rows(), 2) << "not while the box is open";
    };
    pressDelete();
    EXPECT_EQ(phones(), u"602"_s);
    boxes.whileShown = nullptr;
    script.queue.clear();
    changeQueue();
    EXPECT_TRUE(phones().isEmpty()) << "and nothing waits afterwards";
}

TEST_F(QueueGridTest, theCurrentRowStaysTheSameNumberAfterADeletion)
{
    showQueue(5);
    select({2});
    pressDelete();
    EXPECT_EQ(grid()->currentRow(), 2);
    select({4});
    pressDelete();
    EXPECT_EQ(grid()->currentRow(), 3) << "the last one that is left";
}

TEST_F(QueueGridTest, theFocusGoesBackToTheGridAfterADeletionWhereverABoxHasLeftIt)
{
    script.status = 1;
    showQueue(3);
    select({1, 2});
    boxes.whileShown = [this] { control("txtPhone")->setFocus(); };
    bool thereBefore = true;
    script.inCall = [&](const QString &call) {
        if (call == update)
            thereBefore = grid()->hasFocus();
    };
    pressDelete();
    EXPECT_EQ(boxes.shown.size(), 2);
    EXPECT_FALSE(thereBefore) << "the engine is told first";
    EXPECT_TRUE(grid()->hasFocus());
    script.inCall = nullptr;
}

TEST_F(QueueGridTest, aNoLeavesTheFocusWhereItIs)
{
    boxes.yesNoAnswer = MessageBoxes::Answer::No;
    showQueue(2);
    select({2});
    boxes.whileShown = [this] { control("txtPhone")->setFocus(); };
    pressDelete();
    EXPECT_FALSE(grid()->hasFocus());
}

TEST_F(QueueGridTest, aChangeWhileItIsToldOfTheKeptRowWaitsUntilTheQueueIsHandedBack)
{
    script.status = 1;
    showQueue(4);
    select({1, 3});
    boxes.whileShown = [this] {
        if (boxes.shown.size() < 2)
            return;
        script.queue.removeFirst(); // message 1 is sent
        changeQueue();
        EXPECT_EQ(phones(), u"601 602 604"_s);
    };
    pressDelete();
    EXPECT_EQ(boxes.shown, (QList{deleteQuestion(), exclamation(3760020)}));
    EXPECT_EQ(takeCalls(), (QStringList{status, status, update, u"GetQueue"_s}));
    EXPECT_EQ(script.updates.first().deletedIds(), QList<qint64>{103});
    EXPECT_EQ(phones(), u"602 603 604"_s) << "as this engine answers";
}

TEST_F(QueueGridTest, theHourglassIsShownWhileTheEngineIsAskedAndNotWithABox)
{
    script.status = 1;
    showQueue(3);
    select({1, 2});
    QStringList waited;
    const auto look = [&](const QString &where) {
        const QCursor *const pointer = QApplication::overrideCursor();
        waited += where + (pointer && pointer->shape() == Qt::WaitCursor ? u'+' : u'-');
    };
    script.inCall = look;
    boxes.whileShown = [&] { look(u"box"_s); };
    pressDelete();
    script.inCall = nullptr;
    EXPECT_EQ(waited,
              (QStringList{u"box-"_s, status + u'+', status + u'+', u"box-"_s, update + u'+'}));
    EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(QueueGridTest, thousandsOfRowsAreDeletedWithEachHandledOnce)
{
    showQueue(1);
    script.queue.clear();
    for (int number = 1; number <= 20'000; ++number)
        script.queue.append({u"2100-01-01T00:00:00"_s, QString::number(number), u"x"_s, number});
    changeQueue();
    grid()->setCurrentIndex(cell(1, 0));
    grid()->selectAll();
    const Allocations made = allocationsOf([this] { pressDelete(); });
    EXPECT_LT(made.count, 20'000 * 40) << "each row is handled once";
    EXPECT_LT(made.bytes, 20'000 * 4000);
    EXPECT_EQ(grid()->rows(), 0);
    EXPECT_EQ(script.updates.first().deletedIds().size(), 20'000);
}

} // namespace norvane
