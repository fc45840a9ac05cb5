#include "NorvaneHistory/OutputActions.h"

#include "foundation/Globals.h"
#include "foundation/MessageBoxes.h"
#include "foundation/TextId.h"

#include <QDir>
#include <QFileDialog>
#include <QPrintDialog>
#include <QPrinter>
#include <QProgressDialog>
#include <QSaveFile>
#include <QStandardPaths>

#include <memory>
#include <utility>

namespace norvane {

using namespace Qt::StringLiterals;

OutputChoices OutputChoices::ofToolkit()
{
    return {[](QWidget *window, const QString &title, const QString &name) {
                const QDir documents(
                    QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
                return QFileDialog::getSaveFileName(window, title, documents.filePath(name),
                                                    u"CSV (*.csv)"_s);
            },
            [](QWidget *window, QPrinter &printer) {
                QPrintDialog dialog(&printer, window);
                return dialog.exec() == QDialog::Accepted;
            }};
}

OutputActions::OutputActions(OutputChoices choices, QWidget *window)
    : QObject(window), m_choices(std::move(choices)), m_window(window)
{}

void OutputActions::exportCsv(const OutputList &list)
{
    if (m_walk)
        return;
    const QString name =
        m_choices.pickFile(m_window, GS(TextId::ExportTitle), list.title + u".csv"_s);
    if (name.isEmpty()) {
        Q_EMIT done();
        return;
    }
    const auto file = std::make_shared<QSaveFile>(name);
    if (!file->open(QIODevice::WriteOnly)) {
        showProblem(GS(TextId::FileNotWritten, name, file->errorString()));
        return;
    }
    file->write(ListOutput::csvHead(list));
    walk(
        list,
        [file, areOurs = list.areOurs](const ListWalk::Rows &rows) {
            for (const QStringList &row : rows)
                file->write(ListOutput::csvRecord(row, areOurs));
            return file->error() == QFileDevice::NoError;
        },
        [this, file, name] {
            // The file of before stays unless all of this one is on the disk.
            if (!file->commit())
                showProblem(GS(TextId::FileNotWritten, name, file->errorString()));
            else
                Q_EMIT done();
        });
}

void OutputActions::printList(const OutputList &list)
{
    if (m_walk)
        return;
    const auto printer = std::make_shared<QPrinter>(QPrinter::HighResolution);
    printer->setDocName(list.title);
    printer->setPageOrientation(QPageLayout::Landscape);
    if (!m_choices.pickPrinter(m_window, *printer)) {
        Q_EMIT done();
        return;
    }
    const auto printed = std::make_shared<QList<QStringList>>();
    walk(
        list,
        [printed](const ListWalk::Rows &rows) {
            *printed += rows;
            return printed->size() <= ListOutput::maxPrintedRows;
        },
        [this, list, printed, printer] {
            const bool isCut = printed->size() > ListOutput::maxPrintedRows;
            if (isCut)
                printed->resize(ListOutput::maxPrintedRows);
            if (!ListOutput::print(list, *printed, *printer))
                showProblem(GS(TextId::NotPrinted));
            else if (isCut)
                showProblem(GS(TextId::PrintedInPart, ListOutput::maxPrintedRows));
            else
                Q_EMIT done();
        });
}

void OutputActions::walk(const OutputList &list, const ListWalk::Take &take,
                         const std::function<void()> &finish)
{
    constexpr int quietFor = 700; // ms until the progress is shown
    auto *const progress =
        new QProgressDialog(GS(TextId::RowsWritten, 0), GS(TextId::CancelButton), 0, 0, m_window);
    progress->setObjectName(u"OutputProgress"_s);
    progress->setWindowTitle(list.title);
    progress->setWindowModality(Qt::WindowModal);
    progress->setMinimumDuration(quietFor);
    m_walk = new ListWalk(list, take, progress);
    connect(m_walk, &ListWalk::advanced, progress, [progress](qsizetype rows) {
        progress->setLabelText(GS(TextId::RowsWritten, rows));
        progress->setValue(0); // shows it if it takes long
    });
    const auto close = [this, progress] {
        m_walk = nullptr;
        progress->disconnect();
        progress->close();
        progress->deleteLater();
    };
    connect(m_walk, &ListWalk::finished, this, [close, finish] {
        close();
        finish();
    });
    connect(m_walk, &ListWalk::failed, this, [this, close](const SourceFailure &failure) {
        close();
        showProblem(failure.text);
    });
    connect(progress, &QProgressDialog::canceled, this, [this, close] {
        m_walk->cancel();
        close();
        Q_EMIT done();
    });
    m_walk->start();
}

void OutputActions::showProblem(const QString &text)
{
    messageBoxes().show(text, MessageBoxes::Icon::Exclamation, MessageBoxes::Buttons::Ok,
                        boxTitle());
    Q_EMIT done();
}

} // namespace norvane
