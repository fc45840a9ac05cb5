// Draws the history's window for the documentation, with messages that nobody sent:
//   history_pictures LANGUAGE light|dark SCALE FOLDER messages|inbox|summary...
// The files are history-messages, -inbox and -summary, with language, scale and colours in their
// names.

#include "NorvaneHistory/FakeSource.h"
#include "NorvaneHistory/HistoryWindow.h"
#include "foundation/Globals.h"
#include "foundation/ui/Application.h"
#include "foundation/ui/Look.h"

#include <QDateTime>
#include <QStyle>
#include <QTabWidget>
#include <QTableView>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

constexpr int settlingRounds = 50;

/// What stands in the messages, in the language of the window.
struct Words
{
    const char *language;
    const char *order;
    const char *nextOrder;
    const char *appointment;
    const char *nextAppointment;
    const char *offer;
    const char *repair;
    const char *visit;
    const char *answer;
    const char *optOut;
};

constexpr std::array words = {
    Words{"ESN", "Su pedido 4711 está listo. Gracias por su compra.", "Su pedido 4712 está listo.",
          "Le esperamos mañana a las 10:00.", "Le esperamos mañana a las 11:00.",
          "Hasta el domingo: 20 % en toda la tienda.", "Su reparación ha terminado.",
          "Le esperamos el lunes a las 9:30.", "Gracias, allí estaré", "BAJA"},
    Words{"PTG", "A sua encomenda 4711 está pronta. Obrigado pela sua compra.",
          "A sua encomenda 4712 está pronta.", "Esperamos por si amanhã às 10:00.",
          "Esperamos por si amanhã às 11:00.", "Até domingo: 20 % em toda a loja.",
          "A sua reparação está concluída.", "Esperamos por si na segunda-feira às 9:30.",
          "Obrigado, lá estarei", "BAIXA"},
    Words{"CAT", "La seva comanda 4711 és a punt. Gràcies per la seva compra.",
          "La seva comanda 4712 és a punt.", "L'esperem demà a les 10:00.",
          "L'esperem demà a les 11:00.", "Fins diumenge: 20 % a tota la botiga.",
          "La seva reparació està acabada.", "L'esperem dilluns a les 9:30.", "Gràcies, hi seré",
          "BAIXA"},
};

struct Sample
{
    MessageState state;
    const char *phone;
    const char *Words::*text;
};

constexpr std::array samples = {
    Sample{MessageState::Delivered, "600111222", &Words::order},
    Sample{MessageState::Sent, "+34600333444", &Words::appointment},
    Sample{MessageState::Refused, "600555666", &Words::offer},
    Sample{MessageState::Delivered, "600888999", &Words::offer},
    Sample{MessageState::Failed, "60012", &Words::nextAppointment},
    Sample{MessageState::Delivered, "600444333", &Words::repair},
    Sample{MessageState::InDoubt, "600777888", &Words::repair},
    Sample{MessageState::Delivered, "600111222", &Words::nextOrder},
    Sample{MessageState::Waiting, "600999000", &Words::visit},
};

const Words &wordsOf(const QString &language)
{
    const auto *const found = std::find_if(words.begin(), words.end(), [&](const Words &each) {
        return language == QLatin1String(each.language);
    });
    return found == words.end() ? words.front() : *found;
}

QPalette darkPalette()
{
    QPalette palette(QColor(0x31, 0x36, 0x3B));
    palette.setColor(QPalette::Base, QColor(0x23, 0x26, 0x29));
    palette.setColor(QPalette::AlternateBase, QColor(0x2B, 0x2F, 0x33));
    palette.setColor(QPalette::Text, QColor(0xEF, 0xF0, 0xF1));
    palette.setColor(QPalette::WindowText, QColor(0xEF, 0xF0, 0xF1));
    palette.setColor(QPalette::ButtonText, QColor(0xEF, 0xF0, 0xF1));
    palette.setColor(QPalette::Highlight, QColor(0x2A, 0x73, 0x98));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    return palette;
}

void fill(FakeSource &source, const Words &written)
{
    const QString day = u"2026-11-20T"_s;
    int minute = 0;
    for (const Sample &sample : samples) {
        HistoryRow row = source.addRow(sample.state, QString::fromUtf8(sample.phone),
                                       QString::fromUtf8(written.*sample.text));
        row.at = day + u"10:%1:07"_s.arg(++minute * 5, 2, 10, QChar(u'0'));
        source.rows.first() = row;
    }
    source.steps.insert(source.rows.at(2).id,
                        {{day + u"10:34:58"_s, HistoryStep::Queued, 0, 0, {}},
                         {day + u"10:35:03"_s, HistoryStep::Attempt, 0, -38, {}},
                         {day + u"10:35:07"_s, HistoryStep::Failed, 0, -39, {}}});
    source.inbox = {
        {2, day + u"10:41:30"_s, {}, u"+34600333444"_s, QString::fromUtf8(written.answer), false},
        {1, day + u"10:19:02"_s, {}, u"600555666"_s, QString::fromUtf8(written.optOut), true}};
    const QDate today = QDate::currentDate();
    for (int before = 0; before < 30; ++before) {
        const auto some = static_cast<quint32>(before * 37 % 23);
        source.summary.days.append({today.addDays(-before).toString(u"yyyy-MM-dd"_s), 8 + some / 3,
                                    60 + some * 2, some % 6, some % 4, some % 3});
    }
    source.summary.delays = {{10, 940},  {30, 610},    {60, 210},   {300, 120}, {900, 64},
                             {3600, 40}, {21'600, 22}, {86'400, 9}, {0, 3}};
    source.summary.reasons = {{MessageState::Refused, 0x46, 41},
                              {MessageState::Refused, 0x43, 25},
                              {MessageState::Failed, -35, 14},
                              {MessageState::InDoubt, -39, 6},
                              {MessageState::Failed, -18, 2}};
}

void settle()
{
    for (int round = 0; round < settlingRounds; ++round)
        QCoreApplication::processEvents();
}

void choose(const HistoryWindow &window, const QString &list, int row)
{
    auto *const view = window.findChild<QTableView *>(list);
    view->setCurrentIndex(view->model()->index(row, 0));
}

int draw(const QStringList &wanted, const QString &language, const QString &folder,
         const QString &ending)
{
    FakeSource source;
    fill(source, wordsOf(language));
    HistoryWindow window(source, OutputChoices{});
    window.show();
    source.connectToEngine();
    settle();
    choose(window, u"grdMessages"_s, 2);
    auto *const tabs = window.findChild<QTabWidget *>(u"tabs"_s);
    int tab = 0;
    for (const char *const name : {"messages", "inbox", "summary"}) {
        tabs->setCurrentIndex(tab);
        if (tab++ == 1)
            choose(window, u"grdInbox"_s, 1);
        settle();
        if (!wanted.contains(QLatin1String(name)))
            continue;
        const QString file = u"%1/history-%2-%3.png"_s.arg(folder, QLatin1String(name), ending);
        if (!window.grab().save(file))
            return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}

} // namespace

} // namespace norvane

int main(int argc, char **argv)
{
    using namespace norvane;
    if (argc < 6)
        return EXIT_FAILURE;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_SCALE_FACTOR", argv[3]);
    Application application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    applyLook();
    if (arguments.at(2) == "dark"_L1)
        QApplication::setPalette(readable(darkPalette()));
    goLocalize = std::make_unique<cls_Localize>();
    if (!goLocalize->Init(
            QStringLiteral(NORVANE_LANGUAGE_DIR "/NorvaneSMS_%1.XML").arg(arguments.at(1)),
            arguments.at(1)))
        return EXIT_FAILURE;
    return draw(arguments.mid(5), arguments.at(1), arguments.at(4),
                arguments.at(1).toLower() + u'-' + arguments.at(2) + u'-' + arguments.at(3));
}
