#include "harness/Scenarios.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTextStream>

#include <csignal>
#include <cstdlib>
#include <memory>
#include <vector>

#include <sys/prctl.h>

using namespace Qt::StringLiterals;

namespace norvane {

namespace {

using Scenario = std::optional<Tally> (*)(const RunOptions &);

/// What tells a test runner that a run was not possible here.
constexpr int exitNotHere = 77;

template <Tally (*run)(const RunOptions &)>
std::optional<Tally> always(const RunOptions &options)
{
    return run(options);
}

struct NamedScenario
{
    const char *name;
    Scenario run;
};

constexpr NamedScenario scenarios[] = {
    {"kill", always<runKill>},     {"cut", always<runCut>},        {"mail", always<runMail>},
    {"disk", always<runFullDisk>}, {"smalldisk", runSmallDisk},    {"weather", always<runWeather>},
    {"managed", runManaged},       {"engines", always<runEngines>}};

Scenario scenarioOf(const QString &name)
{
    for (const NamedScenario &scenario : scenarios) {
        if (name == QLatin1String(scenario.name))
            return scenario.run;
    }
    return nullptr;
}

RunOptions optionsOf(const QCommandLineParser &parser)
{
    RunOptions options;
    options.scenario = parser.positionalArguments().value(0);
    options.cycles = parser.value(u"cycles"_s).toInt();
    options.lanes = std::max(1, parser.value(u"lanes"_s).toInt());
    options.lane = parser.value(u"lane"_s).toInt();
    options.seed = parser.value(u"seed"_s).toUInt();
    options.patient = parser.isSet(u"patient"_s);
    return options;
}

void print(const Tally &tally)
{
    QTextStream out(stdout);
    out << tally.line() << '\n';
    for (const QString &fault : tally.faults)
        out << "fault: " << fault << '\n';
}

int runLane(const RunOptions &options)
{
    const std::optional<Tally> tally = scenarioOf(options.scenario)(options);
    if (!tally)
        return exitNotHere;
    print(*tally);
    return tally->isClean() ? EXIT_SUCCESS : EXIT_FAILURE;
}

int notHere(const RunOptions &options)
{
    QTextStream(stdout) << options.scenario << ": not possible here\n";
    return exitNotHere;
}

/// Runs each lane in a process of its own, and adds up what they counted.
int runLanes(const RunOptions &options, const QStringList &arguments)
{
    QElapsedTimer time;
    time.start();
    std::vector<std::unique_ptr<QProcess>> lanes;
    for (int lane = 0; lane < options.lanes; ++lane) {
        lanes.push_back(std::make_unique<QProcess>());
        lanes.back()->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        lanes.back()->setProcessChannelMode(QProcess::ForwardedErrorChannel);
        lanes.back()->start(QCoreApplication::applicationFilePath(),
                            arguments + QStringList{u"--lane"_s, QString::number(lane)});
    }
    Tally all;
    for (const auto &lane : lanes) {
        lane->waitForFinished(-1);
        if (lane->exitStatus() == QProcess::NormalExit && lane->exitCode() == exitNotHere)
            return notHere(options);
        const QStringList lines = QString::fromUtf8(lane->readAllStandardOutput()).split(u'\n');
        all.addLine(lines.value(0));
        for (const QString &line : lines.mid(1)) {
            if (!line.isEmpty())
                all.faults << line.mid(u"fault: "_s.size());
        }
        if (lane->exitStatus() != QProcess::NormalExit || !lines.value(0).contains(u'='))
            all.fault(&Tally::stuck, u"a lane ended without a count"_s);
    }
    QTextStream(stdout) << options.scenario << ", "
                        << QString::number(static_cast<double>(time.elapsed()) / 1000, 'f', 1)
                        << " s: ";
    print(all);
    return all.isClean() && all.cycles > 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}

} // namespace

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"Ends, cuts off, starves and disturbs an engine with a simulated device, and "
        "counts what became of every message."_s);
    parser.addHelpOption();
    parser.addPositionalArgument(
        u"scenario"_s, u"kill, cut, mail, disk, smalldisk, weather, managed or engines"_s);
    const QString number = u"n"_s;
    parser.addOptions({{u"cycles"_s, u"how often; 0 for all places"_s, number, u"0"_s},
                       {u"lanes"_s, u"how many engines side by side"_s, number, u"1"_s},
                       {u"lane"_s, u"be this one of the lanes"_s, number},
                       {u"seed"_s, u"what the random choices begin with"_s, number, u"1"_s},
                       {u"patient"_s, u"with the cases that take minutes"_s}});
    parser.process(application);
    const RunOptions options = optionsOf(parser);
    if (scenarioOf(options.scenario) == nullptr)
        parser.showHelp(EXIT_FAILURE);
    if (parser.isSet(u"lane"_s))
        return runLane(options);
    return runLanes(options, QCoreApplication::arguments().mid(1));
}
