#include "support/PostgresProxy.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>
#include <functional>
#include <iostream>
#include <map>
#include <string>

using namespace norvane;
using namespace Qt::StringLiterals;

namespace {

using Direction = PostgresProxy::Direction;
using Commands = std::map<std::string, std::function<void()>>;

constexpr auto usage =
    R"(Stands between clients and a PostgreSQL server, and obeys these commands on its
standard input, one a line, until that ends:
  delay MS   of each message in each direction
  hold       take everything and pass nothing on      release   pass it on
  cut        all connections
  refuse     new connections                          accept    them again
  count      what was passed on and what waits)";

void count(const PostgresProxy &proxy)
{
    std::printf("to server %d (%d waiting), to client %d (%d waiting), answers %d, connections %d "
                "(%d open)\n",
                proxy.messages(Direction::ToServer), proxy.waiting(Direction::ToServer),
                proxy.messages(Direction::ToClient), proxy.waiting(Direction::ToClient),
                proxy.answers(), proxy.connections(), proxy.openConnections());
}

/// @return false for a text that is no time
bool setDelay(PostgresProxy &proxy, const QString &text)
{
    bool isNumber = false;
    const double time = text.toDouble(&isNumber);
    if (isNumber && time >= 0)
        proxy.setDelay(std::chrono::microseconds(qRound64(time * 1000)));
    return isNumber && time >= 0;
}

bool obey(PostgresProxy &proxy, const Commands &commands, const std::string &line)
{
    constexpr std::string_view delay = "delay ";
    if (line.starts_with(delay))
        return setDelay(proxy, QString::fromStdString(line.substr(delay.size())));
    const auto command = commands.find(line);
    if (command != commands.end())
        command->second();
    return command != commands.end();
}

void obeyStandardInput(PostgresProxy &proxy)
{
    const Commands commands{
        {"hold", [&] { proxy.hold(); }},
        {"release", [&] { proxy.release(); }},
        {"cut", [&] { proxy.cut(); }},
        {"refuse", [&] { proxy.setRefusing(true); }},
        {"accept", [&] { proxy.setRefusing(false); }},
        {"count", [&] { count(proxy); }},
    };
    std::string line;
    while (std::getline(std::cin, line)) {
        std::puts(obey(proxy, commands, line) ? "ok" : "no such command");
        std::fflush(stdout);
    }
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QString::fromLatin1(usage));
    parser.addHelpOption();
    parser.addPositionalArgument(u"socket"_s, u"of the server, as /run/postgresql/.s.PGSQL.5432"_s);
    parser.addOption({u"loopback"_s, u"Listens at 127.0.0.1 and not at a socket."_s});
    parser.addOption({u"delay"_s, u"Milliseconds from the start."_s, u"MS"_s, u"0"_s});
    parser.process(application);
    if (parser.positionalArguments().size() != 1)
        parser.showHelp(2);

    PostgresProxy proxy(parser.positionalArguments().constFirst(),
                        parser.isSet(u"loopback"_s) ? PostgresProxy::Listen::Loopback
                                                    : PostgresProxy::Listen::Socket);
    if (!setDelay(proxy, parser.value(u"delay"_s)))
        parser.showHelp(2);
    std::printf("%s\n", qPrintable(proxy.address()));
    std::fflush(stdout);
    obeyStandardInput(proxy);
    return 0;
}
