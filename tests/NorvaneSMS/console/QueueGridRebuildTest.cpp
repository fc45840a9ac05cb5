#include "NorvaneSMS/console/QueueGridFixture.h"

namespace norvane {

using namespace Qt::StringLiterals;

TEST_F(QueueGridTest, aRebuildKeepsAnEditInProgressOnItsMessage)
{
    showQueue(4);
    beginEdit(3, 2);
    QTest::keyClicks(editor(), u"abcdef"_s);
    editor()->setSelection(4, -2);
    QLineEdit *const before = editor();
    takeCalls();

    script.queue.removeFirst(); // message 3 now stands in row 2
    changeQueue();
    ASSERT_NE(editor(), nullptr);
    EXPECT_EQ(editor(), before) << "with its undo";
    EXPECT_TRUE(editor()->isVisible());
    EXPECT_TRUE(editor()->hasFocus());
    EXPECT_EQ(editor()->text(), u"abcdef"_s);
    EXPECT_EQ(editor()->selectedText(), u"cd"_s);
    EXPECT_EQ(editor()->cursorPosition(), 2);
    EXPECT_EQ(grid()->currentIndex(), cell(2, 2));
    EXPECT_EQ(takeCalls(), QStringList{u"GetQueue"_s}) << "no guard is asked again";

    QTest::keyClicks(editor(), u"X"_s);
    QTest::keyClick(editor(), Qt::Key_Return);
    ASSERT_EQ(script.updates.size(), 1);
    ASSERT_EQ(script.updates.first().changedRows().size(), 1);
    EXPECT_EQ(script.updates.first().changedRows().first().id, 103);
    EXPECT_EQ(script.updates.first().changedRows().first().message, u"abXef"_s);
    EXPECT_EQ(editor(), nullptr);
}

TEST_F(QueueGridTest, theMessageThatIsEditedIsTheOneThatDeleteRemoves)
{
    showQueue(4);
    beginEdit(3, 2);
    QTest::keyClicks(editor(), u"x"_s);
    script.queue.prepend(waiting(0)); // message 3 now stands in row 4
    changeQueue();
    EXPECT_EQ(grid()->currentRow(), 4);
    EXPECT_EQ(grid()->selectedRows(), QList<int>{4});
    ASSERT_NE(editor(), nullptr);
    QTest::keyClick(editor(), Qt::Key_Return);
    script.queue[3].message = u"x"_s;
    changeQueue();
    pressDelete();
    EXPECT_EQ(script.updates.last().deletedIds(), QList<qint64>{103});
}

TEST_F(QueueGridTest, anEditOfOneOfSeveralSelectedRowsLeavesTheirSelection)
{
    showQueue(5);
    select({2, 4});
    QTest::keyClick(grid(), Qt::Key_F2); // column 0 of row 4: not editable
    grid()->selectionModel()->setCurrentIndex(cell(4, 1), QItemSelectionModel::NoUpdate);
    QTest::keyClick(grid(), Qt::Key_F2);
    ASSERT_NE(editor(), nullptr);
    script.queue.prepend(waiting(0));
    changeQueue();
    EXPECT_EQ(grid()->currentRow(), 5);
    EXPECT_EQ(grid()->selectedRows(), (QList<int>{3, 5}));
}

TEST_F(QueueGridTest, anEditOfARowThatWasTakenOutOfTheSelectionSelectsIt)
{
    showQueue(3);
    select({2, 2}); // the second press takes the row out again and leaves it the current one
    ASSERT_TRUE(grid()->selectedRows().isEmpty());
    grid()->QAbstractItemView::edit(cell(2, 1));
    ASSERT_NE(editor(), nullptr);
    script.queue.prepend(waiting(0));
    changeQueue();
    EXPECT_EQ(grid()->currentRow(), 3);
    EXPECT_EQ(grid()->selectedRows(), QList<int>{3});
}

TEST_F(QueueGridTest, anEditLivesThroughManyRebuilds)
{
    showQueue(30);
    beginEdit(29, 1);
    for (int round = 0; round < 25; ++round) {
        QTest::keyClicks(editor(), u"7"_s);
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
    QTest::keyClicks(editor(), u"999"_s);
    takeCalls();
    script.queue.removeAt(1);
    changeQueue();
    EXPECT_EQ(editor(), nullptr);
    EXPECT_EQ(takeCalls(), QStringList{u"GetQueue"_s});
    EXPECT_TRUE(boxes.shown.isEmpty());
    EXPECT_EQ(phones(), u"601 603"_s);

    edit(2, 1, u"1"_s); // and the next edit is one of its own
    EXPECT_EQ(phones(), u"601 1"_s);
}

TEST_F(QueueGridTest, aRebuildBetweenReturnAndItsHandlingCantHappen)
{
    showQueue(3);
    beginEdit(3, 1);
    QTest::keyClicks(editor(), u"5"_s);
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

TEST_F(QueueGridTest, theLastOneOfSeveralSelectedRowsStaysSelectedByItsMessage)
{
    showQueue(6);
    select({2, 4});
    script.queue.removeAt(1); // 602 goes, 604 now stands in row 3
    changeQueue();
    EXPECT_EQ(grid()->currentRow(), 4);
    EXPECT_EQ(grid()->selectedRows(), QList<int>{3});
    script.queue.removeFirst();
    changeQueue();
    EXPECT_EQ(grid()->currentRow(), 4);
    EXPECT_EQ(grid()->selectedRows(), QList<int>{2}) << "and so at the next rebuild";
    pressDelete();
    EXPECT_EQ(script.updates.last().deletedIds(), QList<qint64>{104});
}

TEST_F(QueueGridTest, aRowThatIsTakenOutOfTheSelectionStaysOutOfIt)
{
    showQueue(5);
    select({2, 4, 2}); // the last press takes row 2 out again and leaves it the current one
    ASSERT_EQ(grid()->currentRow(), 2);
    ASSERT_EQ(grid()->selectedRows(), QList<int>{4});
    script.queue.removeFirst();
    changeQueue();
    EXPECT_EQ(grid()->currentRow(), 2);
    EXPECT_EQ(grid()->selectedRows(), QList<int>{3});
}

TEST_F(QueueGridTest, aSingleRowThatIsPressedAfterSeveralFollowsTheCurrentNumberAgain)
{
    showQueue(5);
    select({2, 4});
    QTest::mouseClick(grid()->viewport(), Qt::LeftButton, Qt::NoModifier,
                      grid()->visualRect(cell(3, 1)).center());
    ASSERT_EQ(grid()->selectedRows(), QList<int>{3});
    script.queue.removeFirst();
    changeQueue();
    EXPECT_EQ(grid()->selectedRows(), QList<int>{3});
    EXPECT_EQ(text(3, 1), u"604"_s) << "the next message";
}

TEST_F(QueueGridTest, whenAllSelectedMessagesAreGoneTheCurrentNumberAloneIsSelected)
{
    showQueue(5);
    select({2, 3});
    script.queue.remove(1, 2);
    changeQueue();
    EXPECT_EQ(grid()->currentRow(), 3);
    EXPECT_EQ(grid()->selectedRows(), QList<int>{3});

    select({2, 3});
    script.queue.remove(1, 2);
    changeQueue();
    EXPECT_EQ(grid()->currentRow(), 0) << "there is no row of that number";
    EXPECT_TRUE(grid()->selectedRows().isEmpty());
}

} // namespace norvane
