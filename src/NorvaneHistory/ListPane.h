#pragma once

#include "NorvaneHistory/DetailsPane.h"

#include <QSplitter>

namespace norvane {

class MessageTableModel;
class SteadyTableView;

/// A list of messages above the details of the chosen one.
class ListPane : public QSplitter
{
    Q_OBJECT

public:
    /// @param model  must outlive this object
    /// @param name  what a screen reader calls the list
    /// @param heaviest  in which a row may stand
    ListPane(MessageTableModel &model, DetailsPane::Kind kind, const QString &name,
             QFont::Weight heaviest, QWidget *parent = nullptr);

    SteadyTableView &list() const { return *m_list; }
    DetailsPane &details() const { return *m_details; }

Q_SIGNALS:
    /// Another row was chosen, or none (-1).
    void rowChosen(int row);

private:
    SteadyTableView *m_list;
    DetailsPane *m_details;
};

} // namespace norvane
