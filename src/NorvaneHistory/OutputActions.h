#pragma once

#include "NorvaneHistory/ListOutput.h"

#include <QPointer>

class QPrinter;
class QProgressDialog;
class QWidget;

namespace norvane {

/// How the operator names a file and a printer. A test replaces it.
struct OutputChoices
{
    /// @return empty when it was cancelled
    std::function<QString(QWidget *window, const QString &title, const QString &name)> pickFile;
    /// @return false when it was cancelled
    std::function<bool(QWidget *window, QPrinter &printer)> pickPrinter;

    /// The toolkit's dialogs.
    static OutputChoices ofToolkit();
};

/// Writes and prints lists, showing how far that is.
class OutputActions : public QObject
{
    Q_OBJECT

public:
    OutputActions(OutputChoices choices, QWidget *window);

    void exportCsv(const OutputList &list);
    void printList(const OutputList &list);

Q_SIGNALS:
    /// What was asked for last is done, or was given up.
    void done();

private:
    /// Walks with a progress window; `finish` is called behind the last row.
    void walk(const OutputList &list, const ListWalk::Take &take,
              const std::function<void()> &finish);
    void showProblem(const QString &text);

    OutputChoices m_choices;
    QWidget *m_window;
    QPointer<ListWalk> m_walk;
};

} // namespace norvane
