#include "NorvaneSMS/console/QueueGridFixture.h"

#include "NorvaneSMS/console/QueueGridModel.h"
#include "foundation/ui/FatalReport.h"

#include <QHeaderView>
#include <QMouseEvent>

namespace norvane {

using namespace Qt::StringLiterals;

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

    Q_EMIT engine()->SMSSent(u"1"_s, u"x"_s, 0);
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
    script.queue.first().message = u"<b>1 < 2</b>"_s + QString(5000, u'x');
    changeQueue();
    const QString tip = cell(1, 2).data(Qt::ToolTipRole).toString();
    EXPECT_TRUE(tip.contains(u"&lt;b&gt;1 &lt; 2&lt;/b&gt;xx"_s));
    EXPECT_LT(tip.size(), 1200);
}

TEST_F(QueueGridTest, theSecondsOfADeliveryDateAreSeenInItsColumn)
{
    script.queue = {waiting(1), waiting(2), waiting(3)};
    for (QueueRow &row : script.queue)
        row.deliveryDate = u"2026-11-23T10:15:59"_s;
    script.queue[2].deliveryDate = u"2026-11-23T10:15:01"_s;
    changeQueue();
    grid()->clearSelection();
    grid()->setCurrentIndex({});
    // Every other row has the same background.
    const auto picture = [this](int row) {
        return grid()->viewport()->grab(grid()->visualRect(cell(row, 0))).toImage();
    };
    EXPECT_NE(picture(1), picture(3));
    script.queue[2].deliveryDate = script.queue[0].deliveryDate;
    changeQueue();
    grid()->clearSelection();
    grid()->setCurrentIndex({});
    EXPECT_EQ(picture(1), picture(3)) << "nothing else tells them apart";
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
        edit(1, 1, u"911"_s);
        EXPECT_EQ(text(1, 1), u"911"_s);
        EXPECT_EQ(takeCalls(), (QStringList{status, update}));
    }
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(QueueGridTest, aPhoneInTheSecondRowIsCorrectedWhileTheEngineRuns)
{
    script.status = 1;
    showQueue(3);
    edit(2, 1, u"+34 91-2a"_s);
    EXPECT_EQ(text(2, 1), u"+34912"_s) << "the phone box's own filter";
    EXPECT_EQ(takeCalls(), QStringList{update});
    ASSERT_EQ(script.updates.size(), 1);
    QueueRow expected = waiting(2);
    expected.phone = u"+34912"_s;
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
    EXPECT_EQ(editor()->text(), u"602"_s);
}

TEST_F(QueueGridTest, aMessageIsEditedWithoutFilterNormalisationOrLimit)
{
    showQueue(2);
    const QString typed = u"Ñandú €\t"_s.remove(u'\t') + QString(200'000, u'x');
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
    script.queue[1].message = u"one\r\ntwo"_s;
    changeQueue();
    beginEdit(2, 2);
    QTest::keyClick(editor(), Qt::Key_End);
    QTest::keyClicks(editor(), u"!"_s);
    QTest::keyClick(editor(), Qt::Key_Return);
    EXPECT_EQ(script.updates.last().changedRows().first().message, u"one\r\ntwo!"_s);
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
    QTest::keyClicks(editor(), u"9"_s);
    QTest::keyClick(editor(), Qt::Key_Escape);
    EXPECT_EQ(text(2, 1), u"602"_s);
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(QueueGridTest, leavingTheCellEndsTheEdit)
{
    showQueue(2);
    beginEdit(2, 1);
    QTest::keyClicks(editor(), u"9"_s);
    control("txtPhone")->setFocus();
    EXPECT_EQ(text(2, 1), u"9"_s);
    EXPECT_EQ(takeCalls(), QStringList{update});
}

TEST_F(QueueGridTest, whatWasHandedBackIsNotCarriedAgain)
{
    showQueue(3);
    edit(2, 1, u"1"_s);
    edit(3, 1, u"2"_s);
    ASSERT_EQ(script.updates.size(), 2);
    ASSERT_EQ(script.updates.last().changedRows().size(), 1);
    EXPECT_EQ(script.updates.last().changedRows().first().id, 103);
}

TEST_F(QueueGridTest, theLogIsNeverEditable)
{
    showQueue(1);
    Q_EMIT engine()->SMSSent(u"1"_s, u"x"_s, 0);
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

TEST_F(QueueGridTest, aChangeWhileARefusedEditIsToldIsShownAtOnceAndNoCellOpens)
{
    script.status = 1;
    const QList<std::function<void()>> ways{
        [this] { beginEdit(1, 1); },
        [this] {
            grid()->setCurrentIndex(cell(1, 2));
            QTest::keyClick(grid(), Qt::Key_X);
        },
        [this] { doubleClick(grid(), cell(1, 2)); },
    };
    for (const int left : {2, 0}) {
        for (const auto &way : ways) {
            showQueue(3);
            boxes.shown.clear();
            boxes.whileShown = [&] {
                script.queue = script.queue.last(left);
                changeQueue();
                EXPECT_EQ(grid()->rows(), left);
            };
            way();
            boxes.whileShown = nullptr;
            EXPECT_EQ(boxes.shown, QList{exclamation(3760022)});
            EXPECT_EQ(takeCalls(), (QStringList{status, u"GetQueue"_s}));
            EXPECT_EQ(editor(), nullptr);
            EXPECT_EQ(grid()->currentRow(), left > 0 ? 1 : 0);
        }
    }
}

TEST_F(QueueGridTest, tabEndsTheEditOfAPhoneAndOpensTheMessageBesideIt)
{
    script.status = 1;
    showQueue(3);
    beginEdit(2, 1);
    QTest::keyClicks(editor(), u"9"_s);
    QTest::keyClick(editor(), Qt::Key_Tab);
    EXPECT_EQ(text(2, 1), u"9"_s);
    EXPECT_EQ(takeCalls(), QStringList{update});
    EXPECT_EQ(grid()->currentIndex(), cell(2, 2));
    ASSERT_NE(editor(), nullptr);
    EXPECT_EQ(editor()->text(), u"text 2"_s);

    QTest::keyClicks(editor(), u"x"_s);
    QTest::keyClick(editor(), Qt::Key_Tab);
    EXPECT_EQ(text(2, 2), u"x"_s);
    EXPECT_EQ(takeCalls(), QStringList{update});
    EXPECT_EQ(editor(), nullptr) << "the delivery date of the next row isn't edited";
    EXPECT_EQ(grid()->currentIndex(), cell(3, 0));
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(grid()->hasFocus());
}

TEST_F(QueueGridTest, tabFromTheLastCellAndBackTabFromAPhoneOpenNoCell)
{
    script.status = 1;
    showQueue(3);
    beginEdit(3, 2);
    QTest::keyClick(editor(), Qt::Key_Tab);
    EXPECT_EQ(editor(), nullptr);
    beginEdit(2, 1);
    QTest::keyClick(editor(), Qt::Key_Backtab);
    EXPECT_EQ(editor(), nullptr);
    EXPECT_EQ(grid()->currentIndex(), cell(2, 0));
    EXPECT_EQ(takeCalls(), (QStringList{update, update}));
    EXPECT_TRUE(boxes.shown.isEmpty()) << "row 1 isn't entered from behind";
}

TEST_F(QueueGridTest, deleteInAnOpenCellDeletesACharacter)
{
    showQueue(2);
    beginEdit(2, 1);
    QTest::keyClick(editor(), Qt::Key_Home);
    QTest::keyClick(editor(), Qt::Key_Delete);
    EXPECT_EQ(editor()->text(), u"02"_s);
    QTest::keyClick(editor(), Qt::Key_End);
    QTest::keyClick(editor(), Qt::Key_Delete); // nothing behind the caret
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(grid()->rows(), 2);
}

TEST_F(QueueGridTest, closingTheWindowDropsAnEditInProgress)
{
    showQueue(2);
    beginEdit(2, 1);
    QTest::keyClicks(editor(), u"9"_s);
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
    EXPECT_TRUE(boxes.shown.first().text.endsWith(u" - 462"_s));
    FatalReport::setTerminate(previous);
}

TEST_F(QueueGridTest, onAClientTheGridsAreOffAndNothingIsCalled)
{
    // The rows of the server that it was a moment ago stand there still.
    boxes.yesNoAnswer = MessageBoxes::Answer::No;
    showQueue(3);
    select({2, 3});
    storeMode(false);
    console->SetDeviceSettings({});
    takeCalls();
    ASSERT_EQ(grid()->selectedRows(), (QList<int>{2, 3}));
    ASSERT_GT(grid()->currentRow(), 0);

    EXPECT_FALSE(grid()->isEnabled());
    EXPECT_FALSE(control("grdSentDetails")->isEnabled());
    pressDelete();
    beginEdit(2, 1);
    doubleClick(grid(), cell(2, 2));
    EXPECT_EQ(editor(), nullptr);
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(QueueGridTest, aConsoleThatStartsAsAClientShowsEmptyGridsThatAreOff)
{
    loadAsClient();
    show();
    EXPECT_EQ(grid()->rows(), 0);
    EXPECT_FALSE(grid()->isEnabled());
    pressDelete();
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_TRUE(takeCalls().isEmpty());
}

} // namespace norvane
