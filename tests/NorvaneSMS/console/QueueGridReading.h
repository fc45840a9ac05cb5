#pragma once

#include "NorvaneSMS/console/QueueGrid.h"

#include <QLineEdit>

namespace norvane {

/// What a test sees of the queue's grid of its console.
/// @tparam Fixture  gives the console's controls by their names
template <typename Fixture>
class QueueGridReading : public Fixture
{
protected:
    QueueGrid *grid() const { return this->template control<QueueGrid>("grdQueue"); }
    /// The editor that is open; one that was closed may still be there for a moment.
    QLineEdit *editor() const
    {
        for (QLineEdit *const candidate :
             grid()->viewport()->template findChildren<QLineEdit *>()) {
            if (candidate->isVisibleTo(grid()->viewport()))
                return candidate;
        }
        return nullptr;
    }
    QModelIndex cell(int row, int column) const { return grid()->model()->index(row - 1, column); }
    QString text(int row, int column) const { return cell(row, column).data().toString(); }
};

} // namespace norvane
