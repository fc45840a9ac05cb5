#include "NorvaneSMS/console/QueuePane.h"

#include "NorvaneSMS/console/ConsoleControls.h"
#include "NorvaneSMS/console/QueueGrid.h"
#include "NorvaneSMS/console/QueueGridModel.h"
#include "NorvaneSMS/engine/EventTexts.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"
#include "foundation/TextId.h"
#include "foundation/ui/ImageControl.h"
#include "foundation/ui/WaitPointer.h"

#include <QLabel>
#include <QScopedValueRollback>

#include <utility>

namespace norvane {

namespace {

/// The row that is being sent while the engine runs.
constexpr int rowInProgress = 1;

void warn(qint32 textId)
{
    messageBoxes().show(GS(textId), MessageBoxes::Icon::Exclamation, MessageBoxes::Buttons::Ok,
                        boxTitle());
}

} // namespace

QueuePane::QueuePane(const ConsoleControls &controls, const QLocale &locale,
                     const std::unique_ptr<SMSManager> &engine, std::function<void()> rebuilt)
    : m_controls(controls), m_rows(new QueueGridModel(locale, controls.grdQueue)), m_engine(engine),
      m_rebuilt(std::move(rebuilt))
{
    m_controls.grdQueue->setModel(m_rows);
}

void QueuePane::setHeaders(const QStringList &headers)
{
    m_rows->setHeaders(headers);
}

void QueuePane::onChanged(qint32 count)
{
    if (m_held)
        m_heldSize = count;
    else
        show(count);
}

void QueuePane::show(qint32 count)
{
    const bool waiting = count >= 1;
    m_controls.imgQueue[1]->setVisible(waiting);
    m_controls.imgQueue[0]->setVisible(!waiting);
    m_controls.lblQueueSize->setText(EventTexts::queueSize(count));

    m_controls.grdQueue->setUpdatesEnabled(false);
    bind();
    m_controls.grdQueue->setUpdatesEnabled(true);
}

void QueuePane::bind()
{
    QueueRecordSet records = m_engine->GetQueue();
    records.sortByDeliveryDate();
    m_controls.grdQueue->rebuild([&] { m_rows->bind(std::move(records)); });
    m_rebuilt();
}

bool QueuePane::isInProgress(int row) const
{
    return row == rowInProgress && m_engine->GetEngineStatus() == SMSManager::running;
}

bool QueuePane::allowsEdit(int row, int column) const
{
    if (column == QueueGridModel::DeliveryDate)
        return false;
    const bool refused = isInProgress(row);
    if (refused)
        warn(TextId::EditTooLate);
    return !refused;
}

void QueuePane::handBack()
{
    m_engine->UpdateQueue(m_rows->records());
    m_rows->forgetChanges();
}

void QueuePane::deleteSelected()
{
    if (m_controls.grdQueue->currentRow() < 1)
        return;
    const QList<int> rows = m_controls.grdQueue->selectedRows();
    if (rows.isEmpty())
        return;

    // The boxes run an event loop, and the noted numbers are those of the rows as they stand now.
    {
        const QScopedValueRollback held(m_held, true);
        if (messageBoxes().show(GS(TextId::DeleteRowsQuestion), MessageBoxes::Icon::Question,
                                MessageBoxes::Buttons::YesNo,
                                boxTitle()) == MessageBoxes::Answer::Yes)
            deleteRows(rows);
    }
    if (const auto size = std::exchange(m_heldSize, std::nullopt))
        show(*size);
}

void QueuePane::deleteRows(const QList<int> &rows)
{
    // The row that may have to be kept is the first one, and so the last to be checked.
    if (!removeButInProgress(rows))
        warn(TextId::DeletionTooLate);
    const WaitPointer pointer;
    m_controls.grdQueue->viewport()->repaint();
    handBack();
    m_controls.grdQueue->setFocus();
}

bool QueuePane::removeButInProgress(const QList<int> &rows)
{
    const WaitPointer pointer; // the engine is asked once for each row
    QList<int> going;
    for (auto row = rows.crbegin(); row != rows.crend(); ++row) {
        const qint32 status = m_engine->GetEngineStatus();
        if (*row != rowInProgress || status != SMSManager::running)
            going.append(*row - 1);
    }
    removeFromGrid(going);
    return going.size() == rows.size();
}

void QueuePane::removeFromGrid(const QList<int> &rows)
{
    if (rows.isEmpty())
        return;
    QueueGrid *const grid = m_controls.grdQueue;
    const int current = grid->currentRow();
    grid->rebuild([&] { m_rows->removeRows(rows); });
    if (const int left = grid->rows(); left > 0 && left < current)
        grid->setCurrentRow(left);
}

} // namespace norvane
