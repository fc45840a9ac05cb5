#include "NorvaneSMS/console/QueuePane.h"

#include "NorvaneSMS/console/ControlsFixture.h"
#include "NorvaneSMS/console/QueueGrid.h"
#include "NorvaneSMS/console/QueueGridModel.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"
#include "foundation/ui/ImageControl.h"

#include <QLabel>

namespace norvane {

namespace {

class QueuePaneTest : public ControlsFixture
{
protected:
    QueuePaneTest() { makeEngine(); }

    /// A queue of messages 1 to `count`, the last one first.
    void queue(int count)
    {
        m_script.queue.clear();
        for (int number = count; number >= 1; --number)
            m_script.queue.append({u"2026-11-20T12:00:0%1"_s.arg(number), u"60%1"_s.arg(number),
                                   u"text"_s, 100 + number});
    }
    void showQueue(int count)
    {
        queue(count);
        m_pane.show(count);
        takeCalls();
    }
    void select(const QList<int> &rows)
    {
        m_controls.grdQueue->setCurrentIndex(cell(rows.first(), 0));
        m_controls.grdQueue->clearSelection();
        for (const int row : rows)
            m_controls.grdQueue->selectionModel()->select(
                cell(row, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
    QModelIndex cell(int row, int column) const
    {
        return m_controls.grdQueue->model()->index(row - 1, column);
    }
    QString phones() const
    {
        QStringList phones;
        for (int row = 1; row <= m_controls.grdQueue->rows(); ++row)
            phones.append(cell(row, QueueGridModel::Phone).data().toString());
        return phones.join(u' ');
    }
    bool isShown(int picture) const { return m_controls.imgQueue[picture]->isVisibleTo(&m_window); }

    int m_rebuilt = 0;
    QueuePane m_pane{m_controls, m_locale, m_engine, [this] { ++m_rebuilt; }};
};

TEST_F(QueuePaneTest, showsWhatTheEngineSaysInTheOrderOfDelivery)
{
    queue(3);
    m_pane.show(3);
    EXPECT_EQ(phones(), u"601 602 603"_s);
    EXPECT_EQ(m_controls.lblQueueSize->text(), GS(TextId::QueueSize, 3));
    EXPECT_TRUE(isShown(1));
    EXPECT_FALSE(isShown(0));
    EXPECT_EQ(m_rebuilt, 1);
    EXPECT_TRUE(m_controls.grdQueue->updatesEnabled());
}

TEST_F(QueuePaneTest, showsAQueueOfNoneAsEmpty)
{
    showQueue(1);
    for (const qint32 count : {0, -1}) {
        queue(0);
        m_pane.show(count);
        EXPECT_EQ(phones(), QString());
        EXPECT_EQ(m_controls.lblQueueSize->text(), GS(TextId::QueueEmpty));
        EXPECT_TRUE(isShown(0));
        EXPECT_FALSE(isShown(1));
    }
}

TEST_F(QueuePaneTest, asksTheEngineInUse)
{
    showQueue(1);
    makeEngine();
    takeCalls();
    m_pane.onChanged(1);
    EXPECT_EQ(takeCalls(), QStringList{u"GetQueue"_s});
}

TEST_F(QueuePaneTest, allowsNoEditOfADate)
{
    showQueue(2);
    EXPECT_FALSE(m_pane.allowsEdit(2, QueueGridModel::DeliveryDate));
    EXPECT_TRUE(m_boxes.shown.isEmpty());
    EXPECT_TRUE(takeCalls().isEmpty()) << "the engine has no say in that";
}

TEST_F(QueuePaneTest, allowsNoEditOfTheMessageThatARunningEngineIsSending)
{
    showQueue(2);
    m_script.status = SMSManager::running;
    EXPECT_FALSE(m_pane.allowsEdit(1, QueueGridModel::Phone));
    ASSERT_EQ(m_boxes.shown.size(), 1);
    EXPECT_EQ(m_boxes.shown.first().text, GS(TextId::EditTooLate));
    EXPECT_TRUE(m_pane.allowsEdit(2, QueueGridModel::Phone));
    m_script.status = SMSManager::stopped;
    EXPECT_TRUE(m_pane.allowsEdit(1, QueueGridModel::Message));
    EXPECT_EQ(m_boxes.shown.size(), 1);
}

TEST_F(QueuePaneTest, handsAChangeToTheEngineOnce)
{
    showQueue(2);
    m_controls.grdQueue->model()->setData(cell(2, QueueGridModel::Phone), u"699"_s);
    m_pane.handBack();
    m_pane.handBack();
    ASSERT_EQ(m_script.updates.size(), 2);
    const QList<QueueRow> changed = m_script.updates.first().changedRows();
    ASSERT_EQ(changed.size(), 1);
    EXPECT_EQ(changed.first().phone, u"699"_s);
    EXPECT_TRUE(m_script.updates.last().changedRows().isEmpty());
}

TEST_F(QueuePaneTest, deletesTheSelectedRowsIfTheOperatorAgrees)
{
    showQueue(4);
    select({2, 4});
    m_boxes.yesNoAnswer = MessageBoxes::Answer::No;
    m_pane.deleteSelected();
    EXPECT_EQ(phones(), u"601 602 603 604"_s);
    EXPECT_TRUE(m_script.updates.isEmpty());
    m_boxes.yesNoAnswer = MessageBoxes::Answer::Yes;
    m_pane.deleteSelected();
    EXPECT_EQ(phones(), u"601 603"_s);
    ASSERT_EQ(m_script.updates.size(), 1);
    EXPECT_EQ(m_script.updates.first().deletedIds(), (QList<qint64>{104, 102}));
}

TEST_F(QueuePaneTest, asksNothingWhereNothingIsSelected)
{
    m_pane.deleteSelected();
    showQueue(2);
    select({1});
    m_controls.grdQueue->clearSelection();
    m_pane.deleteSelected();
    EXPECT_TRUE(m_boxes.shown.isEmpty());
    EXPECT_TRUE(takeCalls().isEmpty());
}

TEST_F(QueuePaneTest, keepsTheMessageThatIsBeingSent)
{
    showQueue(3);
    select({1, 3});
    m_script.status = SMSManager::running;
    m_pane.deleteSelected();
    EXPECT_EQ(phones(), u"601 602"_s);
    ASSERT_EQ(m_boxes.shown.size(), 2);
    EXPECT_EQ(m_boxes.shown.last().text, GS(TextId::DeletionTooLate));
}

TEST_F(QueuePaneTest, aChangeInTheMiddleOfADeletionIsShownBehindIt)
{
    showQueue(3);
    select({3});
    m_boxes.whileShown = [this] {
        queue(2);
        m_pane.onChanged(5);
        m_pane.onChanged(2);
        EXPECT_TRUE(m_script.calls.isEmpty());
        EXPECT_EQ(phones(), u"601 602 603"_s);
    };
    m_pane.deleteSelected();
    EXPECT_EQ(takeCalls(), (QStringList{u"GetEngineStatus"_s, u"UpdateQueue"_s, u"GetQueue"_s}));
    EXPECT_EQ(m_controls.lblQueueSize->text(), GS(TextId::QueueSize, 2)) << "the last one";
    m_pane.onChanged(2);
    EXPECT_EQ(takeCalls(), QStringList{u"GetQueue"_s}) << "nothing waits any more";
}

} // namespace

} // namespace norvane
