#include "gsm-simulator/ControlSocket.h"
#include "gsm-simulator/ModemSocket.h"
#include "gsm-simulator/PseudoTerminal.h"
#include "gsm-simulator/SimulatorOptions.h"

#include <QCoreApplication>
#include <QFile>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>

#include <sys/signalfd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace norvane {

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

/// Runs a file of control commands; empty lines and those behind a "#" are left out.
/// @return what went wrong, empty if nothing
QString runCommands(const QString &path, simulator::SimulatedModem &modem)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return path + u": "_s + file.errorString();
    for (int number = 1; !file.atEnd(); ++number) {
        const QByteArray line = file.readLine(simulator::ControlSocket::maxLineLength).trimmed();
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        const simulator::ControlCommands::Outcome outcome = modem.control(line);
        if (outcome.isRefused)
            return u"%1, line %2: %3"_s.arg(path).arg(number).arg(
                QString::fromUtf8(outcome.answer));
    }
    return {};
}

int run(const simulator::SimulatorOptions &options)
{
    const QString program = u"gsm-simulator: "_s;
    const int requests = endRequests();
    simulator::MessageLog log;
    simulator::PseudoTerminal terminal;
    simulator::ModemSocket socket;
    const bool hasSocket = !options.socket.isEmpty();
    QString failure = log.open(options.log);
    if (failure.isEmpty())
        failure = hasSocket ? socket.open(options.socket) : terminal.open(options.link);
    if (!failure.isEmpty()) {
        print(stderr, program + failure + u'\n');
        return Failed;
    }

    simulator::ModemPort &port = hasSocket ? static_cast<simulator::ModemPort &>(socket) : terminal;
    simulator::SimulatedModem modem(port, log, options.modem, options.line);
    simulator::ControlSocket control(
        [&modem](const QByteArray &line) { return modem.control(line).answer; });
    if (!options.control.isEmpty())
        failure = control.open(options.control);
    if (failure.isEmpty() && !options.incoming.isEmpty())
        failure = runCommands(options.incoming, modem);
    if (!failure.isEmpty()) {
        print(stderr, program + failure + u'\n');
        return Failed;
    }

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
    print(stdout, u"ready "_s + (hasSocket ? options.socket : options.link) + u'\n');
    return QCoreApplication::exec();
}

} // namespace

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    // Without it the C library looks for a change of the zone with each time that it converts.
    if (qEnvironmentVariableIsEmpty("TZ"))
        qputenv("TZ", ":/etc/localtime");
    const QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"gsm-simulator"_s);
    QCoreApplication::setApplicationVersion(QStringLiteral(NORVANE_VERSION));

    const simulator::SimulatorOptions options =
        simulator::parseOptions(QCoreApplication::arguments());
    switch (options.action) {
    case simulator::SimulatorOptions::Action::ShowHelp:
        print(stdout, options.help);
        return Done;
    case simulator::SimulatorOptions::Action::ShowVersion:
        print(stdout, QStringLiteral("gsm-simulator " NORVANE_VERSION "\n"));
        return Done;
    case simulator::SimulatorOptions::Action::Refused:
        print(stderr, u"gsm-simulator: "_s + options.refusal + u"\nTry --help.\n"_s);
        return BadUsage;
    case simulator::SimulatorOptions::Action::Run:
        break;
    }
    return run(options);
}
