#include "NorvaneSMS/console/SentPane.h"

#include "NorvaneSMS/console/ConsoleControls.h"
#include "NorvaneSMS/console/SentGridModel.h"
#include "NorvaneSMS/engine/Estimate.h"
#include "NorvaneSMS/engine/EventTexts.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"
#include "foundation/ui/CaptionedFrame.h"

#include <QLabel>
#include <QTableView>

#include <utility>

namespace norvane {

SentPane::SentPane(const ConsoleControls &controls, const QLocale &locale, Clock now)
    : m_controls(controls), m_rows(new SentGridModel(controls.grdSentDetails)), m_locale(locale),
      m_now(std::move(now)), mdLastEvent(Estimate::zeroDate())
{
    m_controls.grdSentDetails->setModel(m_rows);
}

void SentPane::setHeaders(const QStringList &headers)
{
    m_rows->setHeaders(headers);
}

void SentPane::setFailedWord(const QString &word)
{
    m_rows->setFailedWord(word);
}

void SentPane::addSent(const QString &phone, const QString &message, qint32 queueCount)
{
    m_rows->add(
        {EventTexts::sentMoment(m_now(), m_locale), phone, message, SentGridModel::Outcome::Sent});
    m_controls.fraSentDetails->setCaption(EventTexts::sentCaption(m_rows->rowCount()));
    showEstimate(queueCount);
    noteEvent();
}

void SentPane::showEstimate(qint32 queueCount)
{
    const qint32 seconds = Estimate::secondsField(mdLastEvent, m_now());
    const QTime remaining = Estimate::remaining(seconds, queueCount);
    m_controls.lblEstimated->setText(
        GS(TextId::EstimatedTime, EventTexts::timeText(remaining, m_locale)));
}

void SentPane::addFailed(const QString &phone, const QString &message)
{
    m_rows->add(
        {EventTexts::failedMoment(m_now()), phone, message, SentGridModel::Outcome::Failed});
}

void SentPane::noteEvent()
{
    mdLastEvent = m_now();
}

} // namespace norvane
