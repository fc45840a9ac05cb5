#include "NorvaneHistory/FailingPrinter.h"
#include "NorvaneHistory/HistoryFixture.h"
#include "NorvaneHistory/HistoryTexts.h"
#include "NorvaneHistory/InboxTab.h"
#include "NorvaneHistory/MessagesTab.h"

#include <QFile>
#include <QLineEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class HistoryOutputTest : public HistoryFixture
{
protected:
    void openAndFind()
    {
        open();
        done = std::make_unique<QSignalSpy>(window->findChild<OutputActions *>(),
                                            &OutputActions::done);
    }

    bool press(const char *button)
    {
        const qsizetype before = done->count();
        control<QPushButton>(button)->click();
        return waitUntil([&] { return done->count() > before; });
    }

    QByteArray written() const
    {
        QFile file(pickedFile);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Every row of a list, as its fields.
    static QList<QStringList> rowsOf(const OutputList &list)
    {
        QList<QStringList> all;
        ListWalk walk(list, [&all](const ListWalk::Rows &rows) {
            all += rows;
            return true;
        });
        QSignalSpy finished(&walk, &ListWalk::finished);
        walk.start();
        EXPECT_TRUE(waitUntil([&] { return finished.count() == 1; }));
        return all;
    }

    QTemporaryDir folder;
    std::unique_ptr<QSignalSpy> done;
};

TEST_F(HistoryOutputTest, aFileHoldsWhatIsShownWithItsCaptions)
{
    source.addRow(MessageState::Sent, u"601"_s, u"not this"_s);
    source.addRow(MessageState::Failed, u"+34602"_s, u"a,b \"c\" ñ"_s);
    openAndFind();
    control<QLineEdit>("txtSearch")->setText(u"602"_s);
    ASSERT_TRUE(hasPhones({u"+34602"_s}));
    pickedFile = folder.filePath(u"list.csv"_s);
    ASSERT_TRUE(press("btnExport"));
    EXPECT_EQ(written(), u"\uFEFFMomento,Envío,Teléfono,Estado,Código,Mensaje,Entregado\r\n"
                         "2026-01-01T00:02:00,2026-01-01T00:02:00,+34602,Fallido,-22,"
                         "\"a,b \"\"c\"\" ñ\",\r\n"_s.toUtf8());
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(HistoryOutputTest, noTextIsAFormula)
{
    source.addRow(MessageState::Sent, u"=1+1"_s, u"@SUM(A1)"_s);
    openAndFind();
    pickedFile = folder.filePath(u"list.csv"_s);
    ASSERT_TRUE(press("btnExport"));
    EXPECT_TRUE(written().contains(",'=1+1,Enviado,1,'@SUM(A1),"));
}

TEST_F(HistoryOutputTest, rowsThatWereNotScrolledToAreWrittenToo)
{
    source.addRows(2345);
    openAndFind();
    pickedFile = folder.filePath(u"list.csv"_s);
    ASSERT_TRUE(press("btnExport"));
    EXPECT_EQ(written().count("\r\n"), 2346);
    EXPECT_TRUE(written().endsWith(",600000001,Enviado,1,text 1,\r\n"));
}

TEST_F(HistoryOutputTest, whatWasReceivedIsWrittenFromItsTab)
{
    source.inbox = {
        {1, u"2026-01-01T00:00:00"_s, u"2026-01-01T00:00:00+01:00"_s, u"600"_s, u"hello"_s, false}};
    openAndFind();
    showTab(1);
    pickedFile = folder.filePath(u"list.csv"_s);
    ASSERT_TRUE(press("btnExport"));
    EXPECT_EQ(written(),
              u"\uFEFFMomento,Momento de la red,De,Leído,Mensaje\r\n"
              "2026-01-01T00:00:00,2026-01-01T00:00:00+01:00,600,No,hello\r\n"_s.toUtf8());
}

TEST_F(HistoryOutputTest, aFileThatCanNotBeWrittenIsTold)
{
    openAndFind();
    pickedFile = folder.filePath(u"missing/list.csv"_s);
    ASSERT_TRUE(press("btnExport"));
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(boxes.shown.at(0).text.contains(pickedFile));
}

TEST_F(HistoryOutputTest, anEngineThatGoesAwayLeavesTheFileOfBefore)
{
    source.addRows(3);
    openAndFind();
    pickedFile = folder.filePath(u"list.csv"_s);
    QFile before(pickedFile);
    ASSERT_TRUE(before.open(QIODevice::WriteOnly));
    before.write("before");
    before.close();
    source.isAway = true;
    ASSERT_TRUE(press("btnExport"));
    EXPECT_EQ(written(), "before");
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.at(0).text, u"the engine is away"_s);
}

TEST_F(HistoryOutputTest, aPageWhosePlaceWasTakenIsAskedForAgain)
{
    source.addRows(3);
    openAndFind();
    pickedFile = folder.filePath(u"list.csv"_s);
    source.supersededPages = 1;
    ASSERT_TRUE(press("btnExport"));
    EXPECT_EQ(written().count("\r\n"), 4);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(HistoryOutputTest, aListIsNotAskedForInThePlaceOfWhatIsShown)
{
    source.addRows(3);
    openAndFind();
    const qsizetype before = source.calls.count(u"history"_s);
    pickedFile = folder.filePath(u"list.csv"_s);
    ASSERT_TRUE(press("btnExport"));
    showTab(1);
    ASSERT_TRUE(press("btnExport"));
    EXPECT_EQ(source.calls.count(u"history"_s), before);
    EXPECT_EQ(source.calls.count(u"walk"_s), 2);
}

TEST_F(HistoryOutputTest, aLongOneCanBeCancelled)
{
    source.addRows(2000);
    openAndFind();
    pickedFile = folder.filePath(u"list.csv"_s);
    source.hold();
    control<QPushButton>("btnExport")->click();
    auto *const progress = control<QProgressDialog>("OutputProgress");
    ASSERT_NE(progress, nullptr);
    Q_EMIT progress->canceled();
    EXPECT_EQ(done->count(), 1);
    source.release();
    QCoreApplication::processEvents();
    EXPECT_FALSE(QFile::exists(pickedFile));
    ASSERT_TRUE(press("btnExport")); // and another one can begin
    EXPECT_TRUE(QFile::exists(pickedFile));
}

TEST_F(HistoryOutputTest, nothingIsWrittenWithoutAName)
{
    openAndFind();
    ASSERT_TRUE(press("btnExport"));
    ASSERT_TRUE(press("btnPrint"));
    EXPECT_EQ(source.calls.count(u"history"_s), 1);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(HistoryOutputTest, whatIsPrintedStandsAsInTheWindow)
{
    HistoryRow row = source.addRow(MessageState::Failed, u"601"_s, u"one"_s);
    source.rows[0].deliveredAt = u"2026-01-01T00:00:09"_s;
    source.addRow(MessageState::Refused, u"602"_s, u"two"_s);
    source.rows[0].code = 0x46;
    source.addRow(MessageState::Sent, u"603"_s, u"three"_s);
    source.inbox = {{1, u"2026-01-01T00:00:00"_s, {}, u"600"_s, u"hello"_s, false}};
    openAndFind();
    const QList<QStringList> sent =
        rowsOf(window->findChild<MessagesTab *>()->outputList(OutputForm::Shown));
    ASSERT_EQ(sent.size(), 3);
    EXPECT_EQ(sent.at(2), (QStringList{u"01/01/2026 00:01:00"_s, u"01/01/2026 00:01:00"_s, u"601"_s,
                                       u"Fallido"_s, HistoryTexts::errorText(-22), u"one"_s,
                                       u"01/01/2026 00:00:09"_s}));
    EXPECT_EQ(sent.at(1).at(4), HistoryTexts::networkStatus(0x46));
    EXPECT_EQ(sent.at(0).at(4), QString());
    const QList<QStringList> received =
        rowsOf(window->findChild<InboxTab *>()->outputList(OutputForm::Shown));
    ASSERT_EQ(received.size(), 1);
    EXPECT_EQ(received.at(0).at(0), u"01/01/2026 00:00:00"_s);
}

TEST_F(HistoryOutputTest, aPrinterThatFailsOnTheWayHasNotPrinted)
{
    OutputList list;
    list.captions = {u"a"_s};
    list.widths = {100};
    const QList<QStringList> rows(500, {u"row"_s});
    for (const auto failing : {FailingPrinter::Failing::NewPage, FailingPrinter::Failing::End}) {
        FailingPrinter printer(failing);
        EXPECT_FALSE(ListOutput::print(list, rows, printer));
    }
    FailingPrinter printer(FailingPrinter::Failing::Nowhere);
    EXPECT_TRUE(ListOutput::print(list, rows, printer));
}

TEST_F(HistoryOutputTest, aListIsPrintedOnAsManyPagesAsItTakes)
{
    source.addRows(300);
    openAndFind();
    printedFile = folder.filePath(u"list.pdf"_s);
    ASSERT_TRUE(press("btnPrint"));
    QFile file(printedFile);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray pdf = file.readAll();
    EXPECT_TRUE(pdf.startsWith("%PDF"));
    EXPECT_GT(pdf.count("/Type /Page\n"), 3);
    EXPECT_TRUE(boxes.shown.isEmpty());
}

TEST_F(HistoryOutputTest, ofAnEndlessListTheBeginningIsPrintedAndThatIsTold)
{
    source.addRows(static_cast<int>(ListOutput::maxPrintedRows) + 500);
    openAndFind();
    printedFile = folder.filePath(u"list.pdf"_s);
    ASSERT_TRUE(press("btnPrint"));
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.at(0).text,
              u"La lista es larga: se imprimieron sus primeras 10000 filas"_s);
}

} // namespace

} // namespace norvane
