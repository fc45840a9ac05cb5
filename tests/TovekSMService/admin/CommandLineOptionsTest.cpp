#include "TovekSMService/admin/CommandLine.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

Result<CommandLine, AdminFailure> parse(const QStringList &arguments)
{
    return CommandLine::parse(QStringList(u"TovekSMService"_s) + arguments);
}

QString refusal(const QStringList &arguments)
{
    const auto parsed = parse(arguments);
    return parsed ? u"accepted"_s : parsed.error().text;
}

} // namespace

TEST(CommandLineOptions, withoutAnOptionTheEngineIsToRun)
{
    const auto parsed = parse({});
    ASSERT_TRUE(parsed.has_value());
    EXPECT_FALSE(parsed->isQuery);
    EXPECT_EQ(parsed->format, OutcomeReport::Format::Text);
    EXPECT_FALSE(parsed->device || parsed->pin || parsed->backup || parsed->logLevel);
}

TEST(CommandLineOptions, eachOptionSetsWhatItIsFor)
{
    const auto all = parse({u"--device"_s, u"COM2, 9600"_s, u"--pin"_s, u"1234"_s, u"--status"_s,
                            u"--queue"_s, u"--backup"_s, u"copy"_s, u"--log-level"_s, u"debug"_s});
    ASSERT_TRUE(all.has_value());
    EXPECT_EQ(all->device, u"COM2, 9600"_s);
    EXPECT_EQ(all->pin, u"1234"_s);
    EXPECT_TRUE(all->status && all->queue);
    EXPECT_FALSE(all->json || all->report);
    EXPECT_EQ(all->backup, u"copy"_s);
    EXPECT_EQ(all->logLevel, EngineLog::Level::Debug);

    const auto report =
        parse({u"--report"_s, u"--since"_s, u"2024-05-01"_s, u"--format"_s, u"csv"_s});
    ASSERT_TRUE(report.has_value());
    EXPECT_TRUE(report->report);
    EXPECT_EQ(report->since, u"2024-05-01"_s);
    EXPECT_EQ(report->format, OutcomeReport::Format::Csv);

    const auto monitored = parse({u"--status"_s, u"--json"_s});
    ASSERT_TRUE(monitored.has_value());
    EXPECT_TRUE(monitored->status && monitored->json);
}

TEST(CommandLineOptions, whateverAsksOrStoresIsDoneInsteadOfRunning)
{
    const QStringList queries[] = {{u"--device"_s, u"COM2, 9600"_s},
                                   {u"--pin"_s, QString()},
                                   {u"--status"_s},
                                   {u"--queue"_s},
                                   {u"--report"_s},
                                   {u"--backup"_s, u"copy"_s}};
    for (const QStringList &arguments : queries) {
        const auto parsed = parse(arguments);
        EXPECT_TRUE(parsed.has_value() && parsed->isQuery) << arguments.constFirst().toStdString();
    }
    const auto level = parse({u"--log-level"_s, u"warning"_s});
    EXPECT_TRUE(level.has_value() && !level->isQuery);
}

TEST(CommandLineOptions, aRefusalTellsWhatIsWrong)
{
    struct Row
    {
        QStringList arguments;
        QString text;
    };
    const Row rows[] = {
        {{u"--nonsense"_s}, u"Unknown option 'nonsense'."_s},
        {{u"--pin"_s}, u"Missing value after '--pin'."_s},
        {{u"nonsense"_s}, u"unknown argument: nonsense"_s},
        {{u"--device"_s, u"modem"_s}, u"not a device and a speed: \"modem\""_s},
        {{u"--report"_s, u"--since"_s, u"May"_s}, u"--since can't be \"May\""_s},
        {{u"--report"_s, u"--format"_s, u"xml"_s}, u"--format can't be \"xml\""_s},
        {{u"--log-level"_s, u"loud"_s}, u"--log-level can't be \"loud\""_s},
        {{u"--json"_s}, u"--json goes with --status"_s},
        {{u"--format"_s, u"csv"_s}, u"--since and --format go with --report"_s},
        {{u"--status"_s, u"--since"_s, u"2024-05-01"_s},
         u"--since and --format go with --report"_s},
        {{u"--status"_s, u"--json"_s, u"--queue"_s}, u"--status --json goes with no other list"_s},
        {{u"--status"_s, u"--json"_s, u"--report"_s}, u"--status --json goes with no other list"_s},
        {{u"--report"_s, u"--status"_s}, u"--report goes with no other list"_s},
        {{u"--report"_s, u"--queue"_s}, u"--report goes with no other list"_s},
    };
    for (const Row &row : rows)
        EXPECT_EQ(refusal(row.arguments), row.text) << row.arguments.join(u' ').toStdString();
}

} // namespace norvane
