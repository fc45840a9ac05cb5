#pragma once

#include "NorvaneSMS/console/ConsoleFixture.h"
#include "NorvaneSMS/console/QueueGridReading.h"
#include "foundation/Globals.h"

#include <QApplication>
#include <QTest>

namespace norvane {

using namespace Qt::StringLiterals;

/// A server's console whose queue is filled by the test, and what an operator does in its grid.
class QueueGridTest : public QueueGridReading<ConsoleFixture>
{
protected:
    void SetUp() override { loadAsServer(); }

    static QueueRow waiting(int number)
    {
        return {u"2026-11-20T%1:%2:00"_s.arg(number / 60, 2, 10, QLatin1Char('0'))
                    .arg(number % 60, 2, 10, QLatin1Char('0')),
                u"60%1"_s.arg(number), u"text %1"_s.arg(number), 100 + number};
    }

    /// Messages 1 to `count`, which stand in the rows of these numbers, in a window that is shown.
    void showQueue(int count)
    {
        show();
        QApplication::setActiveWindow(console.get());
        script.queue.clear();
        for (int number = 1; number <= count; ++number)
            script.queue.append(waiting(number));
        changeQueue();
        grid()->setFocus();
        takeCalls();
    }
    void changeQueue()
    {
        Q_EMIT engine()->SMSQueueChanged(static_cast<qint32>(script.queue.size()));
    }

    void select(const QList<int> &rows)
    {
        grid()->clearSelection();
        for (const int row : rows) {
            const QPoint place = grid()->visualRect(cell(row, 1)).center();
            QTest::mouseClick(grid()->viewport(), Qt::LeftButton, Qt::ControlModifier, place);
        }
    }
    void pressDelete() { QTest::keyClick(grid(), Qt::Key_Delete); }

    static void doubleClick(QTableView *table, const QModelIndex &index)
    {
        const QPoint place = table->visualRect(index).center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
    }

    /// Begins to edit a cell as the operator does.
    void beginEdit(int row, int column)
    {
        grid()->setCurrentIndex(cell(row, column));
        QTest::keyClick(grid(), Qt::Key_F2);
    }
    void edit(int row, int column, const QString &typed)
    {
        beginEdit(row, column);
        ASSERT_NE(editor(), nullptr);
        editor()->selectAll();
        QTest::keyClicks(editor(), typed);
        QTest::keyClick(editor(), Qt::Key_Return);
    }
    /// The phones of the rows, from the first to the last.
    QString phones() const
    {
        QStringList phones;
        for (int row = 1; row <= grid()->rows(); ++row)
            phones << text(row, 1);
        return phones.join(u' ');
    }
    static RecordingMessageBoxes::Shown exclamation(qint32 id)
    {
        return {GS(id), MessageBoxes::Icon::Exclamation, MessageBoxes::Buttons::Ok,
                u"Norvane SMS"_s};
    }
    static RecordingMessageBoxes::Shown deleteQuestion()
    {
        return {GS(3760021), MessageBoxes::Icon::Question, MessageBoxes::Buttons::YesNo,
                u"Norvane SMS"_s};
    }

    const QString status = u"GetEngineStatus"_s;
    const QString update = u"UpdateQueue"_s;
};

} // namespace norvane
