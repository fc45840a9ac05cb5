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
    EXPECT_EQ(parsed->format, ReportLines::Format::Text);
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
    EXPECT_EQ(report->format, ReportLines::Format::Csv);

    const auto monitored = parse({u"--status"_s, u"--json"_s});
    ASSERT_TRUE(monitored.has_value());
    EXPECT_TRUE(monitored->status && monitored->json);
}

TEST(CommandLineOptions, aNameTellsWhichEngineIsToRunOrIsMeant)
{
    EXPECT_EQ(parse({})->name, EngineName());
    const auto engine = parse({u"--name"_s, u"second"_s});
    ASSERT_TRUE(engine.has_value());
    EXPECT_EQ(engine->name.text(), u"second"_s);
    EXPECT_FALSE(engine->isQuery);
    const QStringList queries[] = {{u"--device"_s, u"COM2, 9600"_s},
                                   {u"--pin"_s, u"1234"_s},
                                   {u"--status"_s, u"--json"_s},
                                   {u"--queue"_s},
                                   {u"--report"_s, u"--since"_s, u"2026-05-01"_s},
                                   {u"--inbox"_s, u"--format"_s, u"csv"_s},
                                   {u"--opt-out"_s, u"add"_s, u"600"_s},
                                   {u"--backup"_s, u"copy"_s}};
    for (const QStringList &query : queries) {
        const auto parsed = parse(query + QStringList{u"--name"_s, u"second"_s});
        ASSERT_TRUE(parsed.has_value()) << query.constFirst().toStdString();
        EXPECT_TRUE(parsed->isQuery) << query.constFirst().toStdString();
        EXPECT_EQ(parsed->name.text(), u"second"_s) << query.constFirst().toStdString();
    }
}

TEST(CommandLineOptions, whateverAsksOrStoresIsDoneInsteadOfRunning)
{
    const QStringList queries[] = {{u"--device"_s, u"COM2, 9600"_s},
                                   {u"--pin"_s, QString()},
                                   {u"--status"_s},
                                   {u"--queue"_s},
                                   {u"--report"_s},
                                   {u"--inbox"_s},
                                   {u"--opt-out"_s, u"list"_s},
                                   {u"--backup"_s, u"copy"_s}};
    for (const QStringList &arguments : queries) {
        const auto parsed = parse(arguments);
        EXPECT_TRUE(parsed.has_value() && parsed->isQuery) << arguments.constFirst().toStdString();
    }
    const auto level = parse({u"--log-level"_s, u"warning"_s});
    EXPECT_TRUE(level.has_value() && !level->isQuery);
}

TEST(CommandLineOptions, theInboxMayBeginSomewhereAndBeCsv)
{
    const auto inbox = parse({u"--inbox"_s});
    ASSERT_TRUE(inbox.has_value());
    EXPECT_TRUE(inbox->inbox);
    EXPECT_FALSE(inbox->report);
    EXPECT_EQ(inbox->since, QString());
    EXPECT_EQ(inbox->format, ReportLines::Format::Text);

    const auto since =
        parse({u"--inbox"_s, u"--since"_s, u"2026-05-01T12:00:00"_s, u"--format"_s, u"csv"_s});
    ASSERT_TRUE(since.has_value());
    EXPECT_EQ(since->since, u"2026-05-01T12:00:00"_s);
    EXPECT_EQ(since->format, ReportLines::Format::Csv);
}

TEST(CommandLineOptions, optOutsAreListedAddedAndRemoved)
{
    using Task = CommandLine::OptOutTask;
    const auto list = parse({u"--opt-out"_s, u"list"_s});
    ASSERT_TRUE(list.has_value());
    EXPECT_EQ(list->optOut, Task::List);
    EXPECT_EQ(list->optOutPhone, QString());
    const auto added = parse({u"--opt-out"_s, u"add"_s, u"+34 600 111 222"_s});
    ASSERT_TRUE(added.has_value());
    EXPECT_EQ(added->optOut, Task::Add);
    EXPECT_EQ(added->optOutPhone, u"+34 600 111 222"_s);
    const auto removed = parse({u"--opt-out"_s, u"remove"_s, u"600"_s});
    ASSERT_TRUE(removed.has_value());
    EXPECT_EQ(removed->optOut, Task::Remove);
    EXPECT_EQ(removed->optOutPhone, u"600"_s);
    EXPECT_FALSE(parse({u"--status"_s})->optOut);
}

TEST(CommandLineOptions, whatIsWrongWithAnOptOutIsTold)
{
    const struct
    {
        QStringList arguments;
        QString text;
    } rows[] = {
        {{u"--opt-out"_s}, u"Missing value after '--opt-out'."_s},
        {{u"--opt-out"_s, u"forget"_s}, u"--opt-out can't be \"forget\""_s},
        {{u"--opt-out"_s, u"LIST"_s}, u"--opt-out can't be \"LIST\""_s},
        {{u"--opt-out"_s, u"add"_s}, u"--opt-out add needs a number"_s},
        {{u"--opt-out"_s, u"add"_s, u"  "_s}, u"--opt-out add needs a number"_s},
        {{u"--opt-out"_s, u"remove"_s}, u"--opt-out remove needs a number"_s},
        {{u"--opt-out"_s, u"list"_s, u"600"_s}, u"unknown argument: 600"_s},
        {{u"--opt-out"_s, u"add"_s, u"600"_s, u"601"_s}, u"unknown argument: 601"_s},
        {{u"--inbox"_s, u"600"_s}, u"unknown argument: 600"_s},
        {{u"--opt-out"_s, u"list"_s, u"--since"_s, u"2026-05-01"_s},
         u"--since and --format go with --report or --inbox"_s},
    };
    for (const auto &row : rows)
        EXPECT_EQ(refusal(row.arguments), row.text) << row.arguments.join(u' ').toStdString();
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
        {{u"--name"_s}, u"Missing value after '--name'."_s},
        {{u"--name"_s, u"Second"_s},
         u"--name can't be \"Second\": a name is 1 to 32 of a-z, 0-9 and _, a letter first"_s},
        {{u"--name"_s, QString(), u"--status"_s},
         u"--name can't be \"\": a name is 1 to 32 of a-z, 0-9 and _, a letter first"_s},
        {{u"--json"_s}, u"--json goes with --status"_s},
        {{u"--format"_s, u"csv"_s}, u"--since and --format go with --report or --inbox"_s},
        {{u"--status"_s, u"--since"_s, u"2024-05-01"_s},
         u"--since and --format go with --report or --inbox"_s},
        {{u"--status"_s, u"--json"_s, u"--queue"_s}, u"--status --json goes with no other list"_s},
        {{u"--status"_s, u"--json"_s, u"--report"_s}, u"--status --json goes with no other list"_s},
        {{u"--report"_s, u"--status"_s}, u"--report goes with no other list"_s},
        {{u"--report"_s, u"--queue"_s}, u"--report goes with no other list"_s},
        {{u"--inbox"_s, u"--queue"_s}, u"--inbox goes with no other list"_s},
        {{u"--inbox"_s, u"--opt-out"_s, u"list"_s}, u"--inbox goes with no other list"_s},
        {{u"--inbox"_s, u"--report"_s}, u"--report goes with no other list"_s},
        {{u"--inbox"_s, u"--status"_s, u"--json"_s}, u"--status --json goes with no other list"_s},
        {{u"--inbox"_s, u"--since"_s, u"May"_s}, u"--since can't be \"May\""_s},
    };
    for (const Row &row : rows)
        EXPECT_EQ(refusal(row.arguments), row.text) << row.arguments.join(u' ').toStdString();
}

} // namespace norvane
