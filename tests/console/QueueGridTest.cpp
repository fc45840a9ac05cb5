#include "console/ConsoleFixture.h"

#include "console/QueueGrid.h"
#include "console/QueueGridModel.h"
#include "foundation/Globals.h"
#include "foundation/ui/FatalReport.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLineEdit>
#include <QMouseEvent>
#include <QTest>

#include <algorithm>

class QueueGridTest : public ConsoleFixture
{
protected:
    void SetUp() override { loadAsServer(); }

    QueueGrid *grid() const { return control<QueueGrid>("grdQueue"); }
    /// The editor that is open; one that was closed may still be there for a moment.
    QLineEdit *editor() const
    {
        for (QLineEdit *const candidate : grid()->viewport()->findChildren<QLineEdit *>()) {
            if (candidate->isVisibleTo(grid()->viewport()))
                return candidate;
        }
        return nullptr;
    }
    QModelIndex cell(int row, int column) const { return grid()->model()->index(row - 1, column); }
    QString text(int row, int column) const { return cell(row, column).data().toString(); }

    static QueueRow waiting(int number)
    {
        return {QStringLiteral("2026-11-20T%1:%2:00")
                    .arg(number / 60, 2, 10, QLatin1Char('0'))
                    .arg(number % 60, 2, 10, QLatin1Char('0')),
                QStringLiteral("60%1").arg(number), QStringLiteral("text %1").arg(number),
                100 + number};
    }

    /// Messages 1 to `count`, which stand in the rows of these numbers, in a window that is shown.
    void showQueue(int count)
    {
        show();
        QApplication::setActiveWindow(console.get());
        script.queue.clear();
        for (int number = 1; number <= count; ++number)
            script.queue.append(waiting(number));
        changeQueue();
        grid()->setFocus();
        takeCalls();
    }
    void changeQueue()
    {
        Q_EMIT engine()->SMSQueueChanged(static_cast<qint32>(script.queue.size()));
    }

    void select(const QList<int> &rows)
    {
        grid()->clearSelection();
        for (const int row : rows) {
            const QPoint place = grid()->visualRect(cell(row, 1)).center();
            QTest::mouseClick(grid()->viewport(), Qt::LeftButton, Qt::ControlModifier, place);
        }
    }
    void pressDelete() { QTest::keyClick(grid(), Qt::Key_Delete); }

    static void doubleClick(QTableView *table, const QModelIndex &index)
    {
        const QPoint place = table->visualRect(index).center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    }

    /// Begins to edit a cell as the operator does.
    void beginEdit(int row, int column)
    {
        grid()->setCurrentIndex(cell(row, column));
        QTest::keyClick(grid(), Qt::Key_F2);
    }
    void edit(int row, int column, const QString &typed)
    {
        beginEdit(row, column);
        ASSERT_NE(editor(), nullptr);
        editor()->selectAll();
        QTest::keyClicks(editor(), typed);
        QTest::keyClick(editor(), Qt::Key_Return);
    }
    /// The phones of the rows, from the first to the last.
    QString phones() const
    {
        QStringList phones;
        for (int row = 1; row <= grid()->rows(); ++row)
            phones << text(row, 1);
        return phones.join(u' ');
    }
    static RecordingMessageBoxes::Shown exclamation(qint32 id)
    {
        return {GS(id), MessageBoxes::Icon::Exclamation, MessageBoxes::Buttons::Ok,
                QStringLiteral("Norvane SMS")};
    }
    static RecordingMessageBoxes::Shown deleteQuestion()
    {
        return {GS(3760021), MessageBoxes::Icon::Question, MessageBoxes::Buttons::YesNo,
                QStringLiteral("Norvane SMS")};
    }

    const QString status = QStringLiteral("GetEngineStatus");
    const QString update = QStringLiteral("UpdateQueue");
};

TEST_F(QueueGridTest, bothGridsHaveAHeaderAndThreeColumnsOfTheirWidths)
{
    for (const char *const name : {"grdQueue", "grdSentDetails"}) {
        auto *const table = control<QTableView>(name);
        ASSERT_EQ(table->model()->columnCount(), 3) << name;
        EXPECT_EQ(table->columnWidth(0), 84) << name;  // 1260 twips
        EXPECT_EQ(table->columnWidth(1), 107) << name; // 1600
        EXPECT_EQ(table->columnWidth(2), 78) << name;  // 1170
        EXPECT_FALSE(table->horizontalHeader()->isHidden()) << name;
    }
    const auto header = [this](const char *name, int column) {
        return control<QTableView>(name)
            ->model()
            ->headerData(column, Qt::Horizontal, Qt::DisplayRole)
            .toString();
    };
    EXPECT_EQ(header("grdQueue", 0), GS(3760028));
    EXPECT_EQ(header("grdSentDetails", 0), GS(3760031));
    for (const char *const name : {"grdQueue", "grdSentDetails"}) {
        EXPECT_EQ(header(name, 1), GS(3760029));
        EXPECT_EQ(header(name, 2), GS(3760030));
    }
}

TEST_F(QueueGridTest, severalRowsCanBeSelectedInTheQueueAndNoneInTheLog)
{
    showQueue(4);
    select({2, 4});
    EXPECT_EQ(grid()->selectedRows(), (QList<int>{2, 4}));

    Q_EMIT engine()->SMSSent(QStringLiteral("1"), QStringLiteral("x"), 0);
    auto *const sent = control<QTableView>("grdSentDetails");
    sent->selectAll();
    EXPECT_FALSE(sent->selectionModel()->hasSelection());
}

TEST_F(QueueGridTest, theDeliveryDateIsRefusedWithoutAWordInEveryRow)
{
    showQueue(3);
    for (const qint32 engineStatus : {0, 1}) {
        script.status = engineStatus;
        for (const int row : {1, 2, 3}) {
            beginEdit(row, 0);
            QTest::keyClick(grid(), Qt::Key_5);
            doubleClick(grid(), cell(row, 0));
            EXPECT_EQ(editor(), nullptr) << row;
        }
    }
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(QueueGridTest, theMessageInProgressCantBeEditedWhileTheEngineRuns)
{
    script.status = 1;
    showQueue(2);
    for (const int column : {1, 2}) {
        beginEdit(1, column);
        EXPECT_EQ(editor(), nullptr) << column;
    }
    EXPECT_EQ(boxes.shown, (QList{exclamation(3760022), exclamation(3760022)}));
    EXPECT_EQ(takeCalls(), (QStringList{status, status}));
}

TEST_F(QueueGridTest, aDoubleClickOpensACellAlthoughTheQueueChangesBetweenItsPresses)
{
    showQueue(3);
    const QPoint place = grid()->visualRect(cell(2, 2)).center();
    QTest::mouseClick(grid()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    changeQueue();
    const auto secondPress = [&] {
        QMouseEvent press(QEvent::MouseButtonDblClick, place,
                          grid()->viewport()->mapToGlobal(place), Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QApplication::sendEvent(grid()->viewport(), &press);
    };
    secondPress();
    ASSERT_NE(editor(), nullptr);
    QTest::keyClick(editor(), Qt::Key_Escape);

    // Another message in its place is not the one that was pressed.
    QTest::mouseClick(grid()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    script.queue.removeFirst();
    changeQueue();
    secondPress();
    EXPECT_EQ(editor(), nullptr);
}

TEST_F(QueueGridTest, tooltipsShowATextAsItStands)
{
    script.queue = {waiting(1)};
    script.queue.first().message = QStringLiteral("<b>1 < 2</b>") + QString(5000, u'x');
    changeQueue();
    const QString tip = cell(1, 2).data(Qt::ToolTipRole).toString();
    EXPECT_TRUE(tip.contains(QStringLiteral("&lt;b&gt;1 &lt; 2&lt;/b&gt;xx")));
    EXPECT_LT(tip.size(), 1200);
}

TEST_F(QueueGridTest, everyWayIntoACellAsksTheEngine)
{
    script.status = 1;
    showQueue(2);
    grid()->setCurrentIndex(cell(1, 2));
    QTest::keyClick(grid(), Qt::Key_X);
    EXPECT_EQ(boxes.shown.size(), 1);
    QTest::keyClick(grid(), Qt::Key_Space);
    EXPECT_EQ(boxes.shown.size(), 2);
    doubleClick(grid(), cell(1, 2));
    EXPECT_EQ(boxes.shown.size(), 3);
    grid()->QAbstractItemView::edit(cell(1, 2));
    EXPECT_EQ(boxes.shown.size(), 4);
    EXPECT_EQ(editor(), nullptr);
}

TEST_F(QueueGridTest, withTheEngineStoppedTheFirstRowIsEditedLikeAnyOther)
{
    for (const qint32 engineStatus : {0, 2}) {
        script.status = engineStatus;
        showQueue(2);
        edit(1, 1, QStringLiteral("911"));
        EXPECT_EQ(text(1, 1), QStringLiteral("911"));
        EXPECT_EQ(takeCalls(), (QStringList{status, update}));
    }
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(QueueGridTest, aPhoneInTheSecondRowIsCorrectedWhileTheEngineRuns)
{
    script.status = 1;
    showQueue(3);
    edit(2, 1, QStringLiteral("+34 91-2a"));
    EXPECT_EQ(text(2, 1), QStringLiteral("+34912")) << "the phone box's own filter";
    EXPECT_EQ(takeCalls(), QStringList{update});
    ASSERT_EQ(script.updates.size(), 1);
    QueueRow expected = waiting(2);
    expected.phone = QStringLiteral("+34912");
    EXPECT_EQ(script.updates.first().changedRows(), QList<QueueRow>{expected});
    EXPECT_TRUE(script.updates.first().deletedIds().isEmpty());
    EXPECT_EQ(script.updates.first().count(), 3) << "the set is the grid's own, whole";
}

TEST_F(QueueGridTest, aKeyThatThePhoneFilterSwallowsOpensTheCellAndChangesNothing)
{
    showQueue(2);
    grid()->setCurrentIndex(cell(2, 1));
    QTest::keyClick(grid(), Qt::Key_A);
    ASSERT_NE(editor(), nullptr);
    EXPECT_EQ(editor()->text(), QStringLiteral("602"));
}

TEST_F(QueueGridTest, aMessageIsEditedWithoutFilterNormalisationOrLimit)
{
    showQueue(2);
    const QString typed = QStringLiteral("Ñandú €\t").remove(u'\t') + QString(200'000, u'x');
    beginEdit(2, 2);
    ASSERT_NE(editor(), nullptr);
    editor()->selectAll();
    editor()->insert(typed);
    QTest::keyClick(editor(), Qt::Key_Return);
    ASSERT_EQ(script.updates.size(), 1);
    EXPECT_EQ(script.updates.first().changedRows().first().message, typed);
}

TEST_F(QueueGridTest, theLineBreaksOfAMessageSurviveAnEdit)
{
    showQueue(2);
    script.queue[1].message = QStringLiteral("one\r\ntwo");
    changeQueue();
    beginEdit(2, 2);
    QTest::keyClick(editor(), Qt::Key_End);
    QTest::keyClicks(editor(), QStringLiteral("!"));
    QTest::keyClick(editor(), Qt::Key_Return);
    EXPECT_EQ(script.updates.last().changedRows().first().message, QStringLiteral("one\r\ntwo!"));
}

TEST_F(QueueGridTest, theEndOfAnEditCallsTheEngineWhateverWasTyped)
{
    showQueue(2);
    beginEdit(2, 1);
    QTest::keyClick(editor(), Qt::Key_Return);
    EXPECT_EQ(takeCalls(), QStringList{update});
    EXPECT_TRUE(script.updates.first().changedRows().isEmpty());
}

TEST_F(QueueGridTest, escapeLeavesTheCellAsItWasAndCallsNothing)
{
    showQueue(2);
    beginEdit(2, 1);
    QTest::keyClicks(editor(), QStringLiteral("9"));
    QTest::keyClick(editor(), Qt::Key_Escape);
    EXPECT_EQ(text(2, 1), QStringLiteral("602"));
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(QueueGridTest, leavingTheCellEndsTheEdit)
{
    showQueue(2);
    beginEdit(2, 1);
    QTest::keyClicks(editor(), QStringLiteral("9"));
    control("txtPhone")->setFocus();
    EXPECT_EQ(text(2, 1), QStringLiteral("9"));
    EXPECT_EQ(takeCalls(), QStringList{update});
}

TEST_F(QueueGridTest, whatWasHandedBackIsNotCarriedAgain)
{
    showQueue(3);
    edit(2, 1, QStringLiteral("1"));
    edit(3, 1, QStringLiteral("2"));
    ASSERT_EQ(script.updates.size(), 2);
    ASSERT_EQ(script.updates.last().changedRows().size(), 1);
    EXPECT_EQ(script.updates.last().changedRows().first().id, 103);
}

TEST_F(QueueGridTest, theLogIsNeverEditable)
{
    showQueue(1);
    Q_EMIT engine()->SMSSent(QStringLiteral("1"), QStringLiteral("x"), 0);
    takeCalls();
    auto *const sent = control<QTableView>("grdSentDetails");
    for (int column = 0; column < 3; ++column) {
        sent->setCurrentIndex(sent->model()->index(0, column));
        for (const Qt::Key key : {Qt::Key_F2, Qt::Key_A, Qt::Key_Delete})
            QTest::keyClick(sent, key);
        doubleClick(sent, sent->model()->index(0, column));
        EXPECT_EQ(sent->viewport()->findChild<QLineEdit *>(), nullptr) << column;
    }
    EXPECT_EQ(sent->model()->rowCount(), 1);
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(takeCalls().isEmpty());
}

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
    EXPECT_EQ(phones(), QStringLiteral("601 602 603"));
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(QueueGridTest, rowsTwoAndFourGoTheLastOneFirst)
{
    showQueue(5);
    select({2, 4});
    pressDelete();
    EXPECT_EQ(phones(), QStringLiteral("601 603 605"));
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
    EXPECT_EQ(phones(), QStringLiteral("602"));
    EXPECT_EQ(takeCalls(), (QStringList{status, update}));
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
    EXPECT_EQ(whenTold, QStringLiteral("601 604")) << "the others are gone by then";
    EXPECT_EQ(phones(), QStringLiteral("601 604"));
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
    EXPECT_EQ(phones(), QStringLiteral("601"));
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
    EXPECT_EQ(takeCalls(), (QStringList{status, status, update, QStringLiteral("GetQueue")}));
    EXPECT_EQ(ConsoleFixture::text("lblQueueSize"), GS(3760025, 4)) << "the last one's size";
    EXPECT_EQ(phones(), QStringLiteral("602 603 604 609")) << "as this engine answers";
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
    EXPECT_EQ(phones(), QStringLiteral("602"));
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

TEST_F(QueueGridTest, thousandsOfRowsAreDeletedInNoTime)
{
    showQueue(1);
    script.queue.clear();
    for (int number = 1; number <= 20'000; ++number)
        script.queue.append({QStringLiteral("2100-01-01T00:00:00"), QString::number(number),
                             QStringLiteral("x"), number});
    changeQueue();
    grid()->setCurrentIndex(cell(1, 0));
    grid()->selectAll();
    QElapsedTimer timer;
    timer.start();
    pressDelete();
    EXPECT_LT(timer.elapsed(), 3000);
    EXPECT_EQ(grid()->rows(), 0);
    EXPECT_EQ(script.updates.first().deletedIds().size(), 20'000);
}

TEST_F(QueueGridTest, deleteInAnOpenCellDeletesACharacter)
{
    showQueue(2);
    beginEdit(2, 1);
    QTest::keyClick(editor(), Qt::Key_Home);
    QTest::keyClick(editor(), Qt::Key_Delete);
    EXPECT_EQ(editor()->text(), QStringLiteral("02"));
    QTest::keyClick(editor(), Qt::Key_End);
    QTest::keyClick(editor(), Qt::Key_Delete); // nothing behind the caret
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(grid()->rows(), 2);
}

TEST_F(QueueGridTest, aRebuildKeepsAnEditInProgressOnItsMessage)
{
    showQueue(4);
    beginEdit(3, 2);
    QTest::keyClicks(editor(), QStringLiteral("abcdef"));
    editor()->setSelection(4, -2);
    QLineEdit *const before = editor();
    takeCalls();

    script.queue.removeFirst(); // message 3 now stands in row 2
    changeQueue();
    ASSERT_NE(editor(), nullptr);
    EXPECT_EQ(editor(), before) << "with its undo";
    EXPECT_TRUE(editor()->isVisible());
    EXPECT_TRUE(editor()->hasFocus());
    EXPECT_EQ(editor()->text(), QStringLiteral("abcdef"));
    EXPECT_EQ(editor()->selectedText(), QStringLiteral("cd"));
    EXPECT_EQ(editor()->cursorPosition(), 2);
    EXPECT_EQ(grid()->currentIndex(), cell(2, 2));
    EXPECT_EQ(takeCalls(), QStringList{QStringLiteral("GetQueue")}) << "no guard is asked again";

    QTest::keyClicks(editor(), QStringLiteral("X"));
    QTest::keyClick(editor(), Qt::Key_Return);
    ASSERT_EQ(script.updates.size(), 1);
    ASSERT_EQ(script.updates.first().changedRows().size(), 1);
    EXPECT_EQ(script.updates.first().changedRows().first().id, 103);
    EXPECT_EQ(script.updates.first().changedRows().first().message, QStringLiteral("abXef"));
    EXPECT_EQ(editor(), nullptr);
}

TEST_F(QueueGridTest, anEditLivesThroughManyRebuilds)
{
    showQueue(30);
    beginEdit(29, 1);
    for (int round = 0; round < 25; ++round) {
        QTest::keyClicks(editor(), QStringLiteral("7"));
        script.queue.removeFirst();
        changeQueue();
        ASSERT_NE(editor(), nullptr) << round;
    }
    EXPECT_EQ(editor()->text(), QString(25, u'7'));
    editor()->undo();
    EXPECT_NE(editor()->text(), QString(25, u'7'));
}

TEST_F(QueueGridTest, anEditOfAMessageThatIsGoneIsDroppedWithoutAWord)
{
    showQueue(3);
    beginEdit(2, 1);
    QTest::keyClicks(editor(), QStringLiteral("999"));
    takeCalls();
    script.queue.removeAt(1);
    changeQueue();
    EXPECT_EQ(editor(), nullptr);
    EXPECT_EQ(takeCalls(), QStringList{QStringLiteral("GetQueue")});
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(phones(), QStringLiteral("601 603"));

    edit(2, 1, QStringLiteral("1")); // and the next edit is one of its own
    EXPECT_EQ(phones(), QStringLiteral("601 1"));
}

TEST_F(QueueGridTest, aRebuildBetweenReturnAndItsHandlingCantHappen)
{
    showQueue(3);
    beginEdit(3, 1);
    QTest::keyClicks(editor(), QStringLiteral("5"));
    QTest::keyClick(editor(), Qt::Key_Return);
    EXPECT_EQ(script.updates.size(), 1) << "the engine is told before anything else happens";
}

TEST_F(QueueGridTest, severalSelectedRowsStaySelectedByTheirMessages)
{
    showQueue(5);
    select({2, 4});
    script.queue.removeFirst();
    changeQueue();
    EXPECT_EQ(grid()->selectedRows(), (QList<int>{1, 3}));
}

TEST_F(QueueGridTest, aSingleSelectedRowFollowsTheCurrentNumber)
{
    showQueue(5);
    grid()->setCurrentIndex(cell(3, 0));
    script.queue.removeFirst();
    changeQueue();
    EXPECT_EQ(grid()->currentRow(), 3);
    EXPECT_EQ(grid()->selectedRows(), QList<int>{3});
}

TEST_F(QueueGridTest, closingTheWindowDropsAnEditInProgress)
{
    showQueue(2);
    beginEdit(2, 1);
    QTest::keyClicks(editor(), QStringLiteral("9"));
    console->close();
    EXPECT_TRUE(script.updates.isEmpty());
}

TEST_F(QueueGridTest, anEngineThatFailsInTheGuardIsFatal)
{
    int exitCode = 0;
    const auto previous = FatalReport::setTerminate([&](int code) { exitCode = code; });
    showQueue(2);
    script.failingCalls.enqueue(5); // three calls at load, one for the queue
    beginEdit(1, 1);
    EXPECT_EQ(exitCode, 1);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(boxes.shown.first().text.endsWith(QStringLiteral(" - 462")));
    FatalReport::setTerminate(previous);
}

TEST_F(QueueGridTest, onAClientTheGridsAreOffAndNothingIsCalled)
{
    loadAsClient();
    show();
    EXPECT_FALSE(grid()->isEnabled());
    pressDelete();
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(takeCalls().isEmpty());
}
