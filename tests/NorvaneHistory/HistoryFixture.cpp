#include "NorvaneHistory/HistoryFixture.h"

#include <QHeaderView>
#include <QPrinter>
#include <QTabWidget>

namespace norvane {

using namespace Qt::StringLiterals;

HistoryFixture::HistoryFixture(const QString &code) : language(code) {}

void HistoryFixture::open()
{
    const OutputChoices choices{
        [this](QWidget *, const QString &, const QString &) { return pickedFile; },
        [this](QWidget *, QPrinter &printer) {
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(printedFile);
            return !printedFile.isEmpty();
        }};
    window = std::make_unique<HistoryWindow>(source, choices);
    window->show();
    source.connectToEngine();
    const int expected = static_cast<int>(std::min<qsizetype>(source.rows.size(), 250));
    EXPECT_TRUE(waitUntil([&] {
        return messages()->model()->rowCount() == expected &&
               inbox()->model()->rowCount() == source.inbox.size();
    }));
}

QWidget *HistoryFixture::tabOf(QTableView *list) const
{
    return list == messages() ? control<QTabWidget>("tabs")->widget(0)
                              : control<QTabWidget>("tabs")->widget(1);
}

void HistoryFixture::showTab(int index)
{
    control<QTabWidget>("tabs")->setCurrentIndex(index);
}

QString HistoryFixture::cell(const QTableView &view, int row, int column)
{
    return view.model()->index(row, column).data().toString();
}

QStringList HistoryFixture::phones() const
{
    QStringList all;
    for (int row = 0; row < messages()->model()->rowCount(); ++row)
        all << cell(*messages(), row, 1);
    return all;
}

void HistoryFixture::choose(QTableView *view, int row)
{
    view->setCurrentIndex(view->model()->index(row, 0));
}

bool HistoryFixture::hasPhones(const QStringList &expected)
{
    return waitUntil([&] { return phones() == expected; });
}

} // namespace norvane
