#pragma once

#include "contract/SMSManager.h"

#include <QList>
#include <QLocale>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

namespace norvane {

class ConsoleControls;
class QueueGridModel;

/// The queue as the console shows it: its size, the pictures for it, and the grid of what waits.
/// What is edited or deleted in the grid is carried to the engine. Rows count from 1.
class QueuePane
{
public:
    /// @param engine  the console's, which may be replaced; there has to be one for all but
    ///                `setHeaders`
    /// @param rebuilt called when the grid has been bound anew
    QueuePane(const ConsoleControls &controls, const QLocale &locale,
              const std::unique_ptr<SMSManager> &engine, std::function<void()> rebuilt);

    void setHeaders(const QStringList &headers);

    /// Shows the number of messages, `count`, and fetches them from the engine into the grid.
    void show(qint32 count);
    /// The engine's queue has changed: shows it, after a deletion in progress has ended.
    void onChanged(qint32 count);

    /// Whether an edit of the cell may begin. A message box shows why an edit is refused.
    bool allowsEdit(int row, int column) const;
    /// Carries what was changed in the grid to the engine.
    void handBack();
    /// Deletes the selected rows, but for the one that the engine is sending, if the operator
    /// agrees.
    void deleteSelected();

private:
    void bind();
    bool isInProgress(int row) const;
    void deleteRows(const QList<int> &rows);
    /// @return whether all of them went
    bool removeButInProgress(const QList<int> &rows);
    void removeFromGrid(const QList<int> &rows);

    const ConsoleControls &m_controls;
    QueueGridModel *m_rows; ///< belongs to the grid
    const std::unique_ptr<SMSManager> &m_engine;
    std::function<void()> m_rebuilt;
    bool m_held = false;              ///< changes wait
    std::optional<qint32> m_heldSize; ///< of the last one that does
};

} // namespace norvane
