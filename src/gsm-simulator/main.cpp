#include "gsm-simulator/SimulatorOptions.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>

#include <sys/signalfd.h>
#include <unistd.h>

namespace {

enum ExitCode { Done = 0, Failed = 1, BadUsage = 2 };

void print(FILE *stream, const QString &text)
{
    std::fputs(text.toLocal8Bit().constData(), stream);
    std::fflush(stream);
}

/// A descriptor that becomes readable when the process is asked to end.
int endRequests()
{
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP})
        sigaddset(&signals, number);
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

int run(const simulator::SimulatorOptions &options)
{
    const QString program = QStringLiteral("gsm-simulator: ");
    const int requests = endRequests();
    simulator::MessageLog log;
    simulator::PseudoTerminal terminal;
    QString failure = log.open(options.log);
    if (failure.isEmpty())
        failure = terminal.open(options.link);
    if (!failure.isEmpty()) {
        print(stderr, program + failure + u'\n');
        return Failed;
    }

    simulator::SimulatedModem modem(terminal, log, options.modem, options.line);
    QSocketNotifier endRequest(requests, QSocketNotifier::Read);
    QObject::connect(&endRequest, &QSocketNotifier::activated, &modem,
                     [] { QCoreApplication::exit(Done); });
    QObject::connect(&modem, &simulator::SimulatedModem::unplugged, &modem,
                     [] { QCoreApplication::exit(Done); });
    QObject::connect(&modem, &simulator::SimulatedModem::failed, &modem,
                     [&program](const QString &reason) {
                         print(stderr, program + reason + u'\n');
                         QCoreApplication::exit(Failed);
                     });
    print(stdout, QStringLiteral("ready ") + options.link + u'\n');
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("gsm-simulator"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NORVANE_VERSION));

    const simulator::SimulatorOptions options =
        simulator::parseOptions(QCoreApplication::arguments());
    switch (options.wish) {
    case simulator::SimulatorOptions::Wish::ShowHelp:
        print(stdout, options.help);
        return Done;
    case simulator::SimulatorOptions::Wish::ShowVersion:
        print(stdout, QStringLiteral("gsm-simulator " NORVANE_VERSION "\n"));
        return Done;
    case simulator::SimulatorOptions::Wish::Refused:
        print(stderr, QStringLiteral("gsm-simulator: ") + options.refusal +
                          QStringLiteral("\nTry --help.\n"));
        return BadUsage;
    case simulator::SimulatorOptions::Wish::Run:
        break;
    }
    return run(options);
}
