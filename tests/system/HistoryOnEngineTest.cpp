#include "NorvaneHistory/BusHistorySource.h"
#include "contract/BusTypes.h"
#include "foundation/EngineLauncher.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"
#include "support/LoadedLanguage.h"
#include "system/EngineProcess.h"

#include <QDBusServiceWatcher>
#include <QSignalSpy>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// The history's side of the bus over a real engine, with a simulated device.
class HistoryOnEngine : public EngineProcess
{
protected:
    HistoryOnEngine()
        : launcher(makeLauncher(QDBusConnection::sessionBus())),
          source(QDBusConnection::sessionBus(), *launcher)
    {}

    static QDateTime later() { return {QDate(2100, 1, 1), QTime(0, 0), Qt::UTC}; }

    /// What the engine answers to a question.
    template <typename Value, typename Ask>
    SourceResult<Value> answerTo(Ask ask)
    {
        std::optional<SourceResult<Value>> answer;
        ask(SourceAnswer<Value>([&](const SourceResult<Value> &given) { answer = given; }));
        EXPECT_FALSE(answer) << "an answer comes later";
        EXPECT_TRUE(eventually([&] { return answer.has_value(); }));
        return answer.value_or(failed(SourceFailure{}));
    }

    SourceResult<Page<HistoryRow>> history(const HistoryFilter &filter,
                                           const PageRequest &request = {{}, {}, 100})
    {
        return answerTo<Page<HistoryRow>>(
            [&](const auto &answer) { source.fetchHistory(&context, filter, request, answer); });
    }

    QStringList textsFor(const QString &text)
    {
        HistoryFilter filter;
        filter.text = text;
        QStringList texts;
        const auto page = history(filter);
        EXPECT_TRUE(page) << qPrintable(page.error().text);
        for (const HistoryRow &row : page ? page->rows : QList<HistoryRow>())
            texts << row.text;
        return texts;
    }

    LoadedLanguage language{u"ESN"_s};
    std::unique_ptr<EngineLauncher> launcher;
    BusHistorySource source;
    QObject context;
};

TEST_F(HistoryOnEngine, theEngineIsStartedAndSendsNothing)
{
    QSignalSpy connected(&source, &HistorySource::connected);
    source.connectToEngine();
    EXPECT_EQ(connected.count(), 1);
    EXPECT_NE(enginePid(), 0);
    EXPECT_EQ(makeProxy()->GetEngineStatus(), 0);
}

TEST_F(HistoryOnEngine, anEngineThatCannotBeStartedIsAFailureOfEachQuestion)
{
    ProcessEngineLauncher nowhere(QDBusConnection::sessionBus(), u"/nonexistent"_s, 1000);
    BusHistorySource lost(QDBusConnection::sessionBus(), nowhere);
    QSignalSpy failures(&lost, &HistorySource::failed);
    lost.connectToEngine();
    ASSERT_EQ(failures.count(), 1);
    const auto answer = answerTo<Page<HistoryRow>>([&](const auto &taken) {
        lost.fetchHistory(&context, {}, {{}, {}, 100}, taken);
    });
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error().kind, SourceFailure::Kind::NoEngine);
    EXPECT_EQ(answer.error().text, failures.at(0).at(0).value<SourceFailure>().text);
    EXPECT_EQ(failures.count(), 1) << "looking at the list tries no start";
    const auto sent =
        answerTo<Sending>([&](const auto &taken) { lost.send(&context, u"600"_s, u"x"_s, taken); });
    EXPECT_FALSE(sent);
    EXPECT_EQ(failures.count(), 2);
}

TEST_F(HistoryOnEngine, whatWaitsIsFoundWithoutItsAccentsAndCase)
{
    source.connectToEngine();
    const auto proxy = makeProxy();
    proxy->AddSMS(u"600 11 22 33"_s, u"MAÑANA 100%"_s, later());
    proxy->AddSMS(u"+34600999888"_s, u"otro \"texto\""_s, later());
    EXPECT_EQ(textsFor({}), (QStringList{u"otro \"texto\""_s, u"MAÑANA 100%"_s}));
    EXPECT_EQ(textsFor(u"manana"_s), QStringList{u"MAÑANA 100%"_s});
    EXPECT_EQ(textsFor(u"6001122"_s), QStringList{u"MAÑANA 100%"_s});
    EXPECT_EQ(textsFor(u"999"_s), QStringList{u"otro \"texto\""_s});
    EXPECT_EQ(textsFor(u"0%"_s), QStringList{u"MAÑANA 100%"_s});
    EXPECT_EQ(textsFor(u"\"texto"_s), QStringList{u"otro \"texto\""_s});
    EXPECT_EQ(textsFor(u"_"_s), QStringList());
    EXPECT_EQ(textsFor(QString(QChar(u'\0'))).size(), 2); // as a blank
}

TEST_F(HistoryOnEngine, pagesFollowEachOtherAndCanBeReadAgain)
{
    source.connectToEngine();
    const auto proxy = makeProxy();
    for (int number = 0; number < 7; ++number)
        proxy->AddSMS(QString::number(number), u"x"_s, later());
    QStringList phones;
    QString after;
    QString begin;
    QString end;
    do {
        const auto page = history({}, {after, {}, 3});
        ASSERT_TRUE(page);
        for (const HistoryRow &row : page->rows)
            phones << row.phone;
        if (!after.isEmpty() && end.isEmpty()) {
            begin = after;
            end = page->next;
        }
        after = page->next;
    } while (!after.isEmpty());
    EXPECT_EQ(phones, (QStringList{u"6"_s, u"5"_s, u"4"_s, u"3"_s, u"2"_s, u"1"_s, u"0"_s}));
    proxy->AddSMS(u"7"_s, u"x"_s, later());
    const auto again = history({}, {begin, end, 100});
    ASSERT_TRUE(again);
    ASSERT_EQ(again->rows.size(), 3);
    EXPECT_EQ(again->rows.at(0).phone, u"3"_s);
}

TEST_F(HistoryOnEngine, aMadeUpPlaceInTheListIsRefused)
{
    source.connectToEngine();
    const auto page = history({}, {u"'; DROP TABLE message"_s, {}, 3});
    ASSERT_FALSE(page);
    EXPECT_EQ(page.error().kind, SourceFailure::Kind::Refused);
    EXPECT_EQ(page.error().text, GS(TextId::RequestRefused));
}

TEST_F(HistoryOnEngine, changesAreTold)
{
    source.connectToEngine();
    QSignalSpy changes(&source, &HistorySource::changed);
    makeProxy()->AddSMS(u"1"_s, u"x"_s, later());
    EXPECT_TRUE(eventually([&] { return changes.count() > 0; }));
}

TEST_F(HistoryOnEngine, whatIsSentStartsTheEngineAsTheConsoleDoesAndIsFollowed)
{
    plugIn();
    source.connectToEngine();
    const auto sent = answerTo<Sending>(
        [&](const auto &answer) { source.send(&context, u"600111222"_s, u"hello"_s, answer); });
    ASSERT_TRUE(sent);
    EXPECT_EQ(*sent, Sending::Underway);
    EXPECT_TRUE(eventually([&] { return device->messages().size() == 1; }));
    qint64 message = 0;
    EXPECT_TRUE(eventually([&] {
        const auto page = history({});
        message = page && !page->rows.isEmpty() ? page->rows.constFirst().id : 0;
        return message != 0 && page->rows.constFirst().state != MessageState::Waiting;
    }));
    const auto steps = answerTo<QList<HistoryEvent>>(
        [&](const auto &answer) { source.fetchSteps(&context, message, answer); });
    ASSERT_TRUE(steps);
    ASSERT_GE(steps->size(), 2);
    EXPECT_EQ(steps->constFirst().step, HistoryStep::Queued);
    const auto rows = answerTo<QList<HistoryRow>>([&](const auto &answer) {
        source.fetchRows(&context, {message, 12345}, answer);
    });
    ASSERT_TRUE(rows);
    ASSERT_EQ(rows->size(), 1);
    EXPECT_EQ(rows->constFirst().phone, u"600111222"_s);
    const auto summary = answerTo<Summary>(
        [&](const auto &answer) { source.fetchSummary(&context, u"2020-01-01"_s, {}, answer); });
    ASSERT_TRUE(summary);
    ASSERT_EQ(summary->days.size(), 1);
    EXPECT_EQ(summary->days.constFirst().sent + summary->days.constFirst().delivered, 1U);
}

TEST_F(HistoryOnEngine, aNumberIsPutOnTheListOfOptOutsAndTakenOff)
{
    source.connectToEngine();
    const auto isOut = [&] {
        return answerTo<bool>([&](const auto &answer) {
                   source.fetchOptedOut(&context, u"+34600111222"_s, answer);
               })
            .value_or(false);
    };
    const auto set = [&](bool isOptedOut) {
        return answerTo<bool>([&](const auto &answer) {
                   source.setOptedOut(&context, u"600111222"_s, isOptedOut, answer);
               })
            .value_or(false);
    };
    EXPECT_FALSE(isOut());
    EXPECT_TRUE(set(true));
    EXPECT_TRUE(isOut());
    EXPECT_FALSE(set(true)) << "it is there already";
    EXPECT_TRUE(set(false));
    EXPECT_FALSE(isOut());
}

TEST_F(HistoryOnEngine, aQuestionBesideTheListsTakesThePlaceOfNoneOfThem)
{
    source.connectToEngine();
    InboxFilter ofList;
    ofList.text = u"one"_s;
    InboxFilter other;
    other.text = u"two"_s;
    std::optional<bool> isListed;
    std::optional<bool> isBeside;
    source.fetchInbox(&context, ofList, {{}, {}, 10},
                      [&](const auto &page) { isListed = page.has_value(); });
    source.fetchAnswers(&context, other, 10,
                        [&](const auto &page) { isBeside = page.has_value(); });
    EXPECT_TRUE(eventually([&] { return isListed && isBeside; }));
    EXPECT_TRUE(isListed.value_or(false));
    EXPECT_TRUE(isBeside.value_or(false));
}

TEST_F(HistoryOnEngine, anEngineThatWentIsToldAndIsNotStartedByLookingAtTheList)
{
    source.connectToEngine();
    QSignalSpy failures(&source, &HistorySource::failed);
    killEngine();
    // The first may be on its way while the bus tells that the engine has gone.
    for (int time = 0; time < 2; ++time) {
        const auto page = history({});
        ASSERT_FALSE(page);
        EXPECT_EQ(page.error().kind, SourceFailure::Kind::NoEngine);
        ASSERT_TRUE(eventually([&] { return failures.count() == 1; }));
    }
    EXPECT_EQ(enginePid(), 0);
    const auto marked =
        answerTo<bool>([&](const auto &answer) { source.markRead(&context, {1}, answer); });
    EXPECT_FALSE(marked);
    EXPECT_EQ(enginePid(), 0);
}

TEST_F(HistoryOnEngine, anEngineThatComesBackIsToldAndAskedAgain)
{
    source.connectToEngine();
    QSignalSpy connected(&source, &HistorySource::connected);
    QSignalSpy returned(&source, &HistorySource::returned);
    killEngine();
    makeProxy()->AddSMS(u"1"_s, u"x"_s, later());
    ASSERT_TRUE(eventually([&] { return returned.count() == 1; }));
    const auto page = history({});
    ASSERT_TRUE(page);
    EXPECT_EQ(page->rows.size(), 1);
    EXPECT_EQ(connected.count(), 0);
    QSignalSpy changes(&source, &HistorySource::changed);
    makeProxy()->AddSMS(u"2"_s, u"x"_s, later());
    EXPECT_TRUE(eventually([&] { return changes.count() > 0; }));
}

TEST_F(HistoryOnEngine, theStartOfItsOwnIsToldOnce)
{
    QSignalSpy connected(&source, &HistorySource::connected);
    QSignalSpy returned(&source, &HistorySource::returned);
    source.connectToEngine();
    // Another one that watches the name has been told when this one has.
    QDBusServiceWatcher watcher(QLatin1String(Bus::serviceName), QDBusConnection::sessionBus(),
                                QDBusServiceWatcher::WatchForOwnerChange);
    QSignalSpy owners(&watcher, &QDBusServiceWatcher::serviceOwnerChanged);
    killEngine();
    ASSERT_TRUE(eventually([&] { return owners.count() > 0; }));
    EXPECT_EQ(connected.count(), 1);
    EXPECT_EQ(returned.count(), 0);
}

TEST_F(HistoryOnEngine, whatTheOperatorDecidesStartsAnEngineThatWent)
{
    source.connectToEngine();
    QSignalSpy returned(&source, &HistorySource::returned);
    killEngine();
    const auto changed = answerTo<bool>(
        [&](const auto &answer) { source.setOptedOut(&context, u"600111222"_s, true, answer); });
    EXPECT_TRUE(changed.value_or(false));
    EXPECT_NE(enginePid(), 0);
    EXPECT_EQ(returned.count(), 1);
    killEngine();
    const auto sent = answerTo<Sending>(
        [&](const auto &answer) { source.send(&context, u"600"_s, u"x"_s, answer); });
    EXPECT_TRUE(sent);
    EXPECT_NE(enginePid(), 0);
}

TEST_F(HistoryOnEngine, aWalkThroughAListIsNotEndedByASearch)
{
    source.connectToEngine();
    HistoryFilter ofWalk;
    ofWalk.text = u"one"_s;
    HistoryFilter other;
    other.text = u"two"_s;
    std::optional<bool> isWalked;
    std::optional<bool> isListed;
    source.walkHistory(&context, ofWalk, {{}, {}, 10},
                       [&](const auto &page) { isWalked = page.has_value(); });
    source.fetchHistory(&context, other, {{}, {}, 10},
                        [&](const auto &page) { isListed = page.has_value(); });
    EXPECT_TRUE(eventually([&] { return isWalked && isListed; }));
    EXPECT_TRUE(isWalked.value_or(false));
    EXPECT_TRUE(isListed.value_or(false));
}

TEST_F(HistoryOnEngine, anAnswerToWhomIsGoneIsDropped)
{
    source.connectToEngine();
    auto asker = std::make_unique<QObject>();
    bool isAnswered = false;
    source.fetchHistory(asker.get(), {}, {{}, {}, 1}, [&](const auto &) { isAnswered = true; });
    asker.reset();
    ASSERT_TRUE(history({}));
    EXPECT_FALSE(isAnswered);
}

} // namespace

} // namespace norvane
