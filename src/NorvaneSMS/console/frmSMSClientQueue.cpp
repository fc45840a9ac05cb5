#include "NorvaneSMS/console/QueueGrid.h"
#include "NorvaneSMS/console/QueueGridModel.h"
#include "NorvaneSMS/console/frmSMSClient.h"
#include "NorvaneSMS/engine/EventTexts.h"
#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"
#include "foundation/ui/FatalReport.h"
#include "foundation/ui/ImageControl.h"
#include "foundation/ui/WaitPointer.h"

#include <QLabel>
#include <QScopedValueRollback>

#include <utility>

namespace {

/// The row that is being sent while the engine runs.
constexpr int rowInProgress = 1;

void tell(qint32 id)
{
    messageBoxes().show(GS(id), MessageBoxes::Icon::Exclamation, MessageBoxes::Buttons::Ok,
                        boxTitle());
}

} // namespace

void frmSMSClient::connectQueueGrid()
{
    using FatalReport::guarded;
    connect(m_ui.grdQueue, &QueueGrid::beforeEdit, this,
            guarded(this, &frmSMSClient::grdQueue_BeforeEdit));
    connect(m_ui.grdQueue, &QueueGrid::afterEdit, this,
            guarded(this, &frmSMSClient::grdQueue_AfterEdit));
    connect(m_ui.grdQueue, &QueueGrid::deletePressed, this,
            guarded(this, &frmSMSClient::grdQueue_DeletePressed));
}

void frmSMSClient::moSMSManager_SMSQueueChanged(qint32 currentSize)
{
    if (m_queueHeld)
        m_heldQueueSize = currentSize;
    else
        ShowQueueSize(currentSize);
}

void frmSMSClient::ShowQueueSize(qint32 count)
{
    const bool waiting = count >= 1;
    m_ui.imgQueue[1]->setVisible(waiting);
    m_ui.imgQueue[0]->setVisible(!waiting);
    m_ui.lblQueueSize->setText(EventTexts::queueSize(count));

    m_ui.grdQueue->setUpdatesEnabled(false);
    bindQueue();
    m_ui.grdQueue->setUpdatesEnabled(true);
}

void frmSMSClient::bindQueue()
{
    QueueRecordSet records = moSMSManager->GetQueue();
    records.sortByDeliveryDate();
    m_ui.grdQueue->rebuild([&] { m_queueRows->bind(std::move(records)); });
    SetGridHeaders();
}

bool frmSMSClient::isInProgress(int row)
{
    return row == rowInProgress && moSMSManager->GetEngineStatus() == SMSManager::Running;
}

void frmSMSClient::grdQueue_BeforeEdit(int row, int column, bool &cancel)
{
    cancel = true;
    if (column == QueueGridModel::DeliveryDate)
        return;
    if (isInProgress(row))
        tell(3760022);
    else
        cancel = false;
}

void frmSMSClient::grdQueue_AfterEdit()
{
    if (moSMSManager) // an edit that the end of the window cuts short is dropped
        handBackQueue();
}

void frmSMSClient::handBackQueue()
{
    moSMSManager->UpdateQueue(m_queueRows->records());
    m_queueRows->forgetChanges();
}

void frmSMSClient::grdQueue_DeletePressed()
{
    if (m_ui.grdQueue->currentRow() < 1)
        return;
    const QList<int> rows = m_ui.grdQueue->selectedRows();
    if (rows.isEmpty())
        return;

    // The boxes run an event loop, and the noted numbers are those of the rows as they stand now.
    {
        const QScopedValueRollback held(m_queueHeld, true);
        if (messageBoxes().show(GS(3760021), MessageBoxes::Icon::Question,
                                MessageBoxes::Buttons::YesNo,
                                boxTitle()) == MessageBoxes::Answer::Yes)
            deleteRows(rows);
    }
    if (const auto size = std::exchange(m_heldQueueSize, std::nullopt))
        ShowQueueSize(*size);
}

void frmSMSClient::deleteRows(const QList<int> &rows)
{
    // The row that may have to be kept is the first one, and so the last to be looked at.
    if (!removeButInProgress(rows))
        tell(3760020);
    const WaitPointer pointer;
    m_ui.grdQueue->viewport()->repaint();
    handBackQueue();
    m_ui.grdQueue->setFocus();
}

bool frmSMSClient::removeButInProgress(const QList<int> &rows)
{
    const WaitPointer pointer; // the engine is asked once for each row
    QList<int> going;
    for (auto row = rows.crbegin(); row != rows.crend(); ++row) {
        const qint32 status = moSMSManager->GetEngineStatus();
        if (*row != rowInProgress || status != SMSManager::Running)
            going.append(*row - 1);
    }
    removeFromGrid(going);
    return going.size() == rows.size();
}

void frmSMSClient::removeFromGrid(const QList<int> &rows)
{
    if (rows.isEmpty())
        return;
    const int current = m_ui.grdQueue->currentRow();
    m_ui.grdQueue->rebuild([&] { m_queueRows->removeRows(rows); });
    if (const int left = m_ui.grdQueue->rows(); left > 0 && left < current)
        m_ui.grdQueue->setCurrentRow(left);
}
