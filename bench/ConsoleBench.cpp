#include "NorvaneSMS/console/QueueGridModel.h"
#include "NorvaneSMS/console/SentGridModel.h"
#include "NorvaneSMS/console/TerminalView.h"
#include "contract/QueueRecordSet.h"
#include "foundation/Normalisation.h"

#include <QApplication>
#include <QTableView>

#include <benchmark/benchmark.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString textOf160()
{
    QString text;
    while (text.size() < 160)
        text += u"Coração à João, ñandú y más: 10 € "_s;
    return text.left(160);
}

QList<QueueRow> waiting(int count)
{
    QList<QueueRow> rows;
    rows.reserve(count);
    for (int i = 0; i < count; ++i)
        rows.append({u"2100-01-01T%1:%2:00"_s.arg(i / 60 % 24, 2, 10, QLatin1Char('0'))
                         .arg(i % 60, 2, 10, QLatin1Char('0')),
                     u"9%1"_s.arg(i, 8, 10, QLatin1Char('0')),
                     u"Su pedido %1 está listo para recoger."_s.arg(i), i + 1});
    return rows;
}

void normalise160Characters(benchmark::State &state)
{
    const QString text = textOf160();
    for ([[maybe_unused]] auto step : state)
        benchmark::DoNotOptimize(NormalizeSMSText(false, text));
}
BENCHMARK(normalise160Characters);

/// What ShowQueueSize does once it has the rows: sort, bind, and paint the grid.
void rebuildQueueGrid(benchmark::State &state)
{
    const QList<QueueRow> rows = waiting(static_cast<int>(state.range(0)));
    QueueGridModel model{QLocale(QLocale::Spanish)};
    QTableView grid;
    grid.setModel(&model);
    grid.resize(400, 205);
    grid.show();
    for ([[maybe_unused]] auto step : state) {
        QueueRecordSet records(rows);
        grid.setUpdatesEnabled(false);
        records.sortByDeliveryDate();
        model.bind(std::move(records));
        grid.setCurrentIndex(model.index(model.rowCount() / 2, 0));
        grid.scrollTo(grid.currentIndex());
        grid.setUpdatesEnabled(true);
        grid.repaint();
    }
}
BENCHMARK(rebuildQueueGrid)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMillisecond);

/// A line more in the log of communications, which holds so many already, with what is painted.
void appendToTerminal(benchmark::State &state)
{
    TerminalView terminal;
    terminal.resize(530, 117);
    terminal.show();
    QCoreApplication::processEvents();
    const QString line = u"Mensaje enviado a 912345678."_s;
    for (int i = 0; i < state.range(0); ++i)
        terminal.appendLine(line);
    for ([[maybe_unused]] auto step : state) {
        terminal.appendLine(line);
        terminal.viewport()->repaint();
    }
}
BENCHMARK(appendToTerminal)->Arg(0)->Arg(100'000)->Unit(benchmark::kMicrosecond);

/// A row more in the grid of what was sent, which holds so many already, with what is painted.
void appendToSentGrid(benchmark::State &state)
{
    SentGridModel model;
    QTableView grid;
    grid.setModel(&model);
    grid.resize(400, 155);
    grid.show();
    QCoreApplication::processEvents();
    const SentGridModel::Row row{u"20/11/26 9:30:15"_s, u"912345678"_s, u"Hola"_s,
                                 SentGridModel::Outcome::Sent};
    for (int i = 0; i < state.range(0); ++i)
        model.add(row);
    for ([[maybe_unused]] auto step : state) {
        model.add(row);
        grid.viewport()->repaint();
    }
}
BENCHMARK(appendToSentGrid)->Arg(0)->Arg(100'000)->Unit(benchmark::kMicrosecond);

} // namespace

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
