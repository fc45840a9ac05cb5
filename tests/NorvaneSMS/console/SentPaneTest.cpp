#include "NorvaneSMS/console/SentPane.h"

#include "NorvaneSMS/console/ControlsFixture.h"
#include "NorvaneSMS/engine/EventTexts.h"
#include "common/NumberedFailure.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"
#include "foundation/ui/CaptionedFrame.h"

#include <QLabel>
#include <QTableView>

namespace norvane {

namespace {

class SentPaneTest : public ControlsFixture
{
protected:
    QString cell(int row, int column) const
    {
        return m_controls.grdSentDetails->model()->index(row, column).data().toString();
    }
    int rows() const { return m_controls.grdSentDetails->model()->rowCount(); }
    void expectEstimate(const QTime &time) const
    {
        EXPECT_EQ(m_controls.lblEstimated->text(),
                  GS(TextId::EstimatedTime, EventTexts::timeText(time, m_locale)));
    }

    QDateTime m_now{QDate(2026, 11, 20), QTime(9, 30, 15), Qt::UTC};
    SentPane m_pane{m_controls, m_locale, [this] { return m_now; }};
};

TEST_F(SentPaneTest, showsAMessageThatWasSentAndHowManyThereAre)
{
    m_pane.noteEvent();
    m_pane.addSent(u"600"_s, u"text"_s, 0);
    ASSERT_EQ(rows(), 1);
    EXPECT_EQ(cell(0, 0), EventTexts::sentMoment(m_now, m_locale));
    EXPECT_EQ(cell(0, 1), u"600"_s);
    EXPECT_EQ(cell(0, 2), u"text"_s);
    EXPECT_EQ(m_controls.fraSentDetails->caption(), EventTexts::sentCaption(1));
    m_pane.addSent(u"601"_s, u"text"_s, 0);
    EXPECT_EQ(m_controls.fraSentDetails->caption(), EventTexts::sentCaption(2));
}

TEST_F(SentPaneTest, showsAFailedMessageAndLeavesCountAndEstimateAsTheyAre)
{
    m_controls.fraSentDetails->setCaption(u"caption"_s);
    m_controls.lblEstimated->setText(u"estimate"_s);
    m_pane.addFailed(u"600"_s, u"text"_s);
    ASSERT_EQ(rows(), 1);
    EXPECT_EQ(cell(0, 0), u"20-11-2026 09:30:15"_s);
    EXPECT_EQ(m_controls.fraSentDetails->caption(), u"caption"_s);
    EXPECT_EQ(m_controls.lblEstimated->text(), u"estimate"_s);
}

TEST_F(SentPaneTest, estimatesByTheTimeSinceTheEventBefore)
{
    m_pane.noteEvent();
    m_now = m_now.addSecs(7);
    m_pane.addSent(u"600"_s, u"text"_s, 10);
    expectEstimate(QTime(0, 1, 10));
    m_now = m_now.addSecs(2);
    m_pane.addSent(u"601"_s, u"text"_s, 9);
    expectEstimate(QTime(0, 0, 18));
    m_now = m_now.addSecs(40);
    m_pane.noteEvent();
    m_now = m_now.addSecs(3);
    m_pane.addFailed(u"602"_s, u"text"_s);
    m_pane.addSent(u"603"_s, u"text"_s, 8);
    expectEstimate(QTime(0, 0, 24));
}

TEST_F(SentPaneTest, aMessageWhoseEstimateIsTooLongStandsInTheGrid)
{
    m_pane.noteEvent();
    m_now = m_now.addSecs(50);
    EXPECT_THROW(m_pane.addSent(u"600"_s, u"text"_s, 1000), NumberedFailure);
    EXPECT_EQ(rows(), 1);
    EXPECT_EQ(m_controls.fraSentDetails->caption(), EventTexts::sentCaption(1));
    m_now = m_now.addSecs(5);
    m_pane.addSent(u"601"_s, u"text"_s, 1);
    expectEstimate(QTime(0, 0, 55)); // the one that failed is no event to count from
}

TEST_F(SentPaneTest, aScreenReaderSaysWhichMessageFailed)
{
    m_pane.setFailedWord(u"failed"_s);
    m_pane.addSent(u"600"_s, u"text"_s, 0);
    m_pane.addFailed(u"601"_s, u"text"_s);
    const QAbstractItemModel *const model = m_controls.grdSentDetails->model();
    EXPECT_EQ(model->index(0, 0).data(Qt::AccessibleDescriptionRole), QVariant());
    EXPECT_EQ(model->index(1, 0).data(Qt::AccessibleDescriptionRole).toString(), u"failed"_s);
}

TEST_F(SentPaneTest, namesItsColumns)
{
    m_pane.setHeaders({u"a"_s, u"b"_s, u"c"_s});
    EXPECT_EQ(m_controls.grdSentDetails->model()->headerData(2, Qt::Horizontal).toString(), u"c"_s);
}

} // namespace

} // namespace norvane
