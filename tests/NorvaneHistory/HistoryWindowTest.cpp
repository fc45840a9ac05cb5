#include "NorvaneHistory/HistoryFixture.h"

#include "NorvaneHistory/SteadyTableView.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class HistoryWindowTest : public HistoryFixture
{
protected:
    void openWithOneOfEach()
    {
        source.addRow(MessageState::Waiting, u"601"_s, u"one"_s);
        source.addRow(MessageState::Sent, u"602"_s, u"two"_s);
        source.addRow(MessageState::Delivered, u"603"_s, u"three"_s);
        source.addRow(MessageState::Refused, u"604"_s, u"four"_s);
        source.addRow(MessageState::Failed, u"605"_s, u"five"_s);
        source.addRow(MessageState::InDoubt, u"606"_s, u"six"_s);
        open();
    }

    QTableWidget *steps() const { return control<QTableWidget>("tblSteps"); }
    QPushButton *button(const char *name) const
    {
        return controlOf<QPushButton>(*tabOf(messages()), name);
    }
};

TEST_F(HistoryWindowTest, messagesAreShownWithMomentPhoneTextAndState)
{
    openWithOneOfEach();
    EXPECT_EQ(window->windowTitle(), u"Norvane SMS - Historial"_s);
    QStringList first;
    for (int column = 0; column < 4; ++column)
        first << cell(*messages(), 0, column);
    EXPECT_EQ(first, (QStringList{u"01/01/2026 00:06:00"_s, u"606"_s, u"six"_s, u"En duda"_s}));
}

TEST_F(HistoryWindowTest, whatIsTypedIsSearchedInPhoneAndText)
{
    openWithOneOfEach();
    QTest::keyClicks(control<QLineEdit>("txtSearch"), u"605"_s);
    EXPECT_TRUE(hasPhones({u"605"_s}));
    control<QLineEdit>("txtSearch")->setText(u"T"_s);
    EXPECT_TRUE(hasPhones({u"603"_s, u"602"_s}));
    control<QLineEdit>("txtSearch")->clear();
    EXPECT_TRUE(waitUntil([&] { return phones().size() == 6; }));
}

TEST_F(HistoryWindowTest, onlyTheStatesThatAreTickedAreShown)
{
    openWithOneOfEach();
    for (const char *const name : {"chkState(1)", "chkState(2)", "chkState(4)", "chkState(8)"})
        control<QCheckBox>(name)->setChecked(false);
    EXPECT_TRUE(hasPhones({u"606"_s, u"605"_s}));
    control<QCheckBox>("chkState(16)")->setChecked(false);
    control<QCheckBox>("chkState(32)")->setChecked(false);
    EXPECT_TRUE(hasPhones({}));
}

TEST_F(HistoryWindowTest, aRangeOfDatesHoldsBothItsDays)
{
    for (const char *const at : {"2026-03-03T00:00:00", "2026-03-02T23:59:59",
                                 "2026-03-01T00:00:00", "2026-02-28T23:59:59"}) {
        const int id = 100 - static_cast<int>(source.rows.size());
        source.rows.append(
            {id, QLatin1String(at), {}, QString::number(id), u"x"_s, MessageState::Sent, 1, {}});
    }
    open();
    EXPECT_TRUE(control("dtFrom")->isHidden());
    control<QComboBox>("cboRange")->setCurrentIndex(5);
    EXPECT_FALSE(control("dtFrom")->isHidden());
    control<QDateEdit>("dtFrom")->setDate(QDate(2026, 3, 1));
    control<QDateEdit>("dtTo")->setDate(QDate(2026, 3, 2));
    EXPECT_TRUE(hasPhones({u"99"_s, u"98"_s}));
    control<QComboBox>("cboRange")->setCurrentIndex(0);
    EXPECT_TRUE(waitUntil([&] { return phones().size() == 4; }));
}

TEST_F(HistoryWindowTest, todayIsFromMidnightOn)
{
    const QDate today = QDate::currentDate();
    const auto add = [&](qint64 id, const QDate &day) {
        source.rows.append({id,
                            day.toString(u"yyyy-MM-dd"_s) + u"T00:00:00"_s,
                            {},
                            QString::number(id),
                            u"x"_s,
                            MessageState::Sent,
                            1,
                            {}});
    };
    add(3, today);
    add(2, today.addDays(-1));
    add(1, today.addDays(-7));
    open();
    control<QComboBox>("cboRange")->setCurrentIndex(1);
    EXPECT_TRUE(hasPhones({u"3"_s}));
    control<QComboBox>("cboRange")->setCurrentIndex(2); // seven days with today
    EXPECT_TRUE(hasPhones({u"3"_s, u"2"_s}));
    control<QComboBox>("cboRange")->setCurrentIndex(3);
    EXPECT_TRUE(hasPhones({u"3"_s, u"2"_s, u"1"_s}));
}

TEST_F(HistoryWindowTest, theStepsOfTheChosenMessageAreShownInTheirOrder)
{
    openWithOneOfEach();
    source.steps.insert(source.rows.at(3).id,
                        {{u"2026-01-01T10:00:00"_s, HistoryStep::Queued, 0, 0, {}},
                         {u"2026-01-01T10:00:01"_s, HistoryStep::Part, 1, 1, u"7"_s},
                         {u"2026-01-01T10:00:09"_s, HistoryStep::Delivered, 1, 0, {}}});
    choose(messages(), 3);
    ASSERT_TRUE(waitUntil([&] { return steps()->rowCount() == 3; }));
    EXPECT_EQ(steps()->item(0, 1)->text(), u"Puesto en cola"_s);
    EXPECT_EQ(steps()->item(1, 2)->text(), u"Referencia de la red: 7"_s);
    EXPECT_EQ(steps()->item(2, 0)->text(), u"01/01/2026 10:00:09"_s);
    EXPECT_EQ(controlOf<QLabel>(*tabOf(messages()), "lblMessage")->text(), u"603 · Entregado"_s);
}

TEST_F(HistoryWindowTest, whatTheCustomerAnsweredStandsBehindTheSteps)
{
    source.addRow(MessageState::Sent, u"+34600111222"_s, u"question"_s);
    const QString later = u"2026-02-01T00:00:00"_s;
    source.inbox = {{9, later, {}, u"600999888"_s, u"I know 600111222"_s, false},
                    {8, later, {}, u"600111222"_s, u"second"_s, false},
                    {7, later, {}, u"34600111222"_s, u"first"_s, true},
                    {6, u"2025-12-31T00:00:00"_s, {}, u"600111222"_s, u"before"_s, true}};
    open();
    choose(messages(), 0);
    ASSERT_TRUE(waitUntil([&] { return steps()->rowCount() == 2; }));
    EXPECT_EQ(steps()->item(0, 1)->text(), u"Respuesta"_s);
    EXPECT_EQ(steps()->item(0, 2)->text(), u"first"_s);
    EXPECT_EQ(steps()->item(1, 2)->text(), u"second"_s);
}

TEST_F(HistoryWindowTest, anAnswerStandsBeforeWhatCameAfterIt)
{
    const HistoryRow row = source.addRow(MessageState::Delivered, u"600111222"_s, u"question"_s);
    source.steps.insert(row.id, {{u"2026-01-01T10:00:00"_s, HistoryStep::Queued, 0, 0, {}},
                                 {u"2026-01-01T10:00:05"_s, HistoryStep::Sent, 0, 1, {}},
                                 {u"2026-01-01T10:00:09"_s, HistoryStep::Delivered, 1, 0, {}}});
    source.inbox = {{8, u"2026-01-01T10:00:09"_s, {}, u"600111222"_s, u"second"_s, false},
                    {7, u"2026-01-01T10:00:07"_s, {}, u"600111222"_s, u"first"_s, true}};
    open();
    choose(messages(), 0);
    ASSERT_TRUE(waitUntil([&] { return steps()->rowCount() == 5; }));
    QStringList told;
    for (int step = 0; step < 5; ++step)
        told << steps()->item(step, 1)->text();
    EXPECT_EQ(told, (QStringList{u"Puesto en cola"_s, u"Enviado"_s, u"Respuesta"_s,
                                 u"Entregado (parte 1)"_s, u"Respuesta"_s}));
    EXPECT_EQ(steps()->item(2, 2)->text(), u"first"_s);
}

TEST_F(HistoryWindowTest, whoWantsNoMoreIsShownSoAtOnce)
{
    openWithOneOfEach();
    choose(messages(), 2);
    ASSERT_TRUE(waitUntil([&] { return button("btnOptOut")->isEnabled(); }));
    source.optOuts.insert(u"604"_s);
    Q_EMIT source.changed();
    EXPECT_TRUE(waitUntil([&] { return button("btnOptOut")->text() == GS(TextId::OptInButton); }));
}

TEST_F(HistoryWindowTest, stepsOfAMessageThatWasLeftAreDropped)
{
    openWithOneOfEach();
    source.steps.insert(source.rows.at(0).id,
                        {{u"2026-01-01T10:00:00"_s, HistoryStep::Queued, 0, 0, {}}});
    source.hold();
    choose(messages(), 0);
    choose(messages(), 1);
    source.release();
    EXPECT_EQ(steps()->rowCount(), 0);
}

TEST_F(HistoryWindowTest, whatHappensNowIsShownAtOnce)
{
    openWithOneOfEach();
    source.addRow(MessageState::Waiting, u"607"_s, u"seven"_s);
    Q_EMIT source.changed();
    EXPECT_TRUE(waitUntil([&] { return phones().value(0) == "607"_L1; }));
}

TEST_F(HistoryWindowTest, theChosenMessageFollowsWhatBecomesOfIt)
{
    openWithOneOfEach();
    choose(messages(), 4); // sent
    source.rows[4].state = MessageState::Delivered;
    source.steps.insert(source.rows.at(4).id,
                        {{u"2026-01-01T10:00:09"_s, HistoryStep::Delivered, 1, 0, {}}});
    Q_EMIT source.changed();
    const auto *const title = controlOf<QLabel>(*tabOf(messages()), "lblMessage");
    EXPECT_TRUE(waitUntil([&] { return title->text() == u"602 · Entregado"_s; }));
    EXPECT_TRUE(waitUntil([&] { return steps()->rowCount() == 1; }));
}

TEST_F(HistoryWindowTest, aMessageThatMovesStaysChosenAndThePaneFollowsIt)
{
    openWithOneOfEach();
    choose(messages(), 5); // waiting
    const auto *const title = controlOf<QLabel>(*tabOf(messages()), "lblMessage");
    ASSERT_EQ(title->text(), u"601 · En cola"_s);
    QSignalSpy choices(static_cast<SteadyTableView *>(messages()), &SteadyTableView::rowChosen);
    HistoryRow sent = source.rows.takeAt(5);
    sent.state = MessageState::Sent;
    sent.at = u"2026-02-01T00:00:00"_s;
    source.rows.prepend(sent);
    Q_EMIT source.changed();
    ASSERT_TRUE(waitUntil([&] { return title->text() == u"601 · Enviado"_s; }));
    EXPECT_EQ(messages()->currentIndex().row(), 0);
    EXPECT_TRUE(messages()->selectionModel()->isRowSelected(0));
    EXPECT_EQ(messages()->selectionModel()->selectedRows().size(), 1);
    for (const QList<QVariant> &choice : choices)
        EXPECT_EQ(choice.at(0).toInt(), 0);
}

TEST_F(HistoryWindowTest, manyChangesAskForTheStepsOneQuestionAtATime)
{
    openWithOneOfEach();
    choose(messages(), 3);
    ASSERT_TRUE(waitUntil([&] { return source.calls.contains(u"steps"_s); }));
    QCoreApplication::processEvents();
    source.calls.clear();
    source.hold();
    for (int change = 0; change < 20; ++change)
        Q_EMIT source.changed();
    EXPECT_EQ(source.calls.count(u"steps"_s), 1);
    EXPECT_EQ(source.calls.count(u"rows"_s), 1);
    EXPECT_EQ(source.calls.count(u"history"_s), 1);
    source.steps.insert(source.rows.at(3).id,
                        {{u"2026-01-01T10:00:09"_s, HistoryStep::Delivered, 1, 0, {}}});
    source.release();
    EXPECT_TRUE(waitUntil([&] { return steps()->rowCount() == 1; }));
    EXPECT_EQ(source.calls.count(u"steps"_s), 2);
}

TEST_F(HistoryWindowTest, aNewSearchBeginsAtTheTopAndFetchingAnewDoesNot)
{
    source.addRows(200);
    open();
    QScrollBar *const bar = messages()->verticalScrollBar();
    QSignalSpy resets(messages()->model(), &QAbstractItemModel::modelReset);
    bar->setValue(50);
    Q_EMIT source.connected(); // as F5
    ASSERT_TRUE(waitUntil([&] { return resets.count() == 1; }));
    EXPECT_EQ(bar->value(), 50);
    control<QLineEdit>("txtSearch")->setText(u"text 1"_s);
    ASSERT_TRUE(waitUntil([&] { return resets.count() == 2; }));
    EXPECT_EQ(bar->value(), 0);
}

TEST_F(HistoryWindowTest, aPageThatFailsIsToldUntilRowsAreFetchedAgain)
{
    source.addRows(600);
    open();
    const auto *const status = control<QLabel>("lblStatus");
    source.isAway = true;
    messages()->verticalScrollBar()->setValue(100);
    ASSERT_TRUE(waitUntil([&] { return status->text() == u"the engine is away"_s; }));
    source.isAway = false;
    messages()->verticalScrollBar()->setValue(101);
    EXPECT_TRUE(waitUntil([&] { return messages()->model()->rowCount() == 500; }));
    EXPECT_TRUE(status->text().isEmpty());
}

TEST_F(HistoryWindowTest, onlyWhatDidNotArriveForSureCanBeSentAgain)
{
    openWithOneOfEach();
    const QList<bool> expected = {true, true, true, false, false, false}; // in doubt first
    for (int row = 0; row < expected.size(); ++row) {
        choose(messages(), row);
        EXPECT_EQ(button("btnSendAgain")->isEnabled(), expected.at(row)) << row;
    }
}

TEST_F(HistoryWindowTest, sendingAgainAsksFirst)
{
    openWithOneOfEach();
    choose(messages(), 1);
    boxes.yesNoAnswer = MessageBoxes::Answer::No;
    button("btnSendAgain")->click();
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.at(0).text, u"¿Enviar de nuevo el mensaje a 605?"_s);
    EXPECT_TRUE(source.sent.isEmpty());
    boxes.yesNoAnswer = MessageBoxes::Answer::Yes;
    button("btnSendAgain")->click();
    EXPECT_EQ(source.sent, (QList<FakeSource::Sent>{{u"605"_s, u"five"_s}}));
}

TEST_F(HistoryWindowTest, whatIsInDoubtMayHaveArrivedAndTheQuestionSaysSo)
{
    openWithOneOfEach();
    choose(messages(), 0);
    button("btnSendAgain")->click();
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(boxes.shown.at(0).text.contains(u"puede haber llegado"_s));
    EXPECT_EQ(boxes.shown.at(0).buttons, MessageBoxes::Buttons::YesNoDefaultNo);
}

TEST_F(HistoryWindowTest, whatFailedForSureIsSentAgainByTheEnterKey)
{
    openWithOneOfEach();
    choose(messages(), 1);
    button("btnSendAgain")->click();
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.at(0).buttons, MessageBoxes::Buttons::YesNo);
}

TEST_F(HistoryWindowTest, aMessageThatWaitsForAStoppedEngineIsTold)
{
    openWithOneOfEach();
    choose(messages(), 1);
    source.sending = Sending::NotStarted;
    button("btnSendAgain")->click();
    ASSERT_TRUE(waitUntil([&] { return boxes.shown.size() == 2; }));
    EXPECT_EQ(boxes.shown.at(1).text, GS(TextId::SendingNotStarted));
    EXPECT_EQ(boxes.shown.at(1).icon, MessageBoxes::Icon::Exclamation);
}

TEST_F(HistoryWindowTest, aMessageThatIsSentAgainIsNotNormalisedTwice)
{
    // As it was queued: a character of the OEM code page read as ANSI would move once more.
    source.addRow(MessageState::Failed, u"605"_s, u"\u20AC \u00A4 \u00FF"_s);
    open();
    choose(messages(), 0);
    button("btnSendAgain")->click();
    ASSERT_EQ(source.sent.size(), 1);
    EXPECT_EQ(source.sent.at(0).text, source.rows.at(0).text);
}

TEST_F(HistoryWindowTest, aFailedSendingIsTold)
{
    openWithOneOfEach();
    choose(messages(), 1);
    source.isAway = true;
    button("btnSendAgain")->click();
    ASSERT_TRUE(waitUntil([&] { return boxes.shown.size() == 2; }));
    EXPECT_EQ(boxes.shown.at(1).text, u"the engine is away"_s);
    EXPECT_EQ(boxes.shown.at(1).icon, MessageBoxes::Icon::Critical);
}

TEST_F(HistoryWindowTest, aNumberIsPutOnTheListOfOptOutsAndTakenOffAgain)
{
    openWithOneOfEach();
    choose(messages(), 2);
    ASSERT_TRUE(waitUntil([&] { return button("btnOptOut")->isEnabled(); }));
    EXPECT_EQ(button("btnOptOut")->text(), GS(TextId::OptOutButton));
    boxes.yesNoAnswer = MessageBoxes::Answer::No;
    button("btnOptOut")->click();
    EXPECT_TRUE(source.optOuts.isEmpty());
    boxes.yesNoAnswer = MessageBoxes::Answer::Yes;
    button("btnOptOut")->click();
    EXPECT_EQ(source.optOuts, QSet<QString>{u"604"_s});
    ASSERT_TRUE(waitUntil([&] { return button("btnOptOut")->text() == GS(TextId::OptInButton); }));
    button("btnOptOut")->click();
    EXPECT_TRUE(source.optOuts.isEmpty());
    ASSERT_TRUE(waitUntil([&] { return button("btnOptOut")->text() == GS(TextId::OptOutButton); }));
    EXPECT_EQ(boxes.shown.size(), 3);
}

TEST_F(HistoryWindowTest, theAnswerToAQuestionIsForTheMessageThatItNamed)
{
    openWithOneOfEach();
    // The list is fetched anew while the question stands, and nothing is chosen then.
    boxes.whileShown = [&] {
        source.connectToEngine();
        EXPECT_TRUE(waitUntil([&] { return !button("btnAnswer")->isEnabled(); }));
    };
    choose(messages(), 1);
    button("btnSendAgain")->click();
    EXPECT_EQ(source.sent, (QList<FakeSource::Sent>{{u"605"_s, u"five"_s}}));
    choose(messages(), 2);
    ASSERT_TRUE(waitUntil([&] { return button("btnOptOut")->isEnabled(); }));
    button("btnOptOut")->click();
    EXPECT_EQ(source.optOuts, QSet<QString>{u"604"_s});
}

TEST_F(HistoryWindowTest, anEngineThatIsNotThereIsToldAndAskedForAgain)
{
    source.isConnecting = false;
    source.addRows(3);
    const auto status = [&] { return control<QLabel>("lblStatus"); };
    window = std::make_unique<HistoryWindow>(source, OutputChoices{});
    window->show();
    source.connectToEngine();
    EXPECT_EQ(status()->text(), u"no engine <b>here</b>"_s);
    EXPECT_EQ(status()->textFormat(), Qt::PlainText);
    ASSERT_FALSE(control("btnRetry")->isHidden());
    source.isConnecting = true;
    control<QPushButton>("btnRetry")->click();
    EXPECT_TRUE(waitUntil([&] { return messages()->model()->rowCount() == 3; }));
    EXPECT_TRUE(control("btnRetry")->isHidden());
    EXPECT_TRUE(status()->text().isEmpty());
}

TEST_F(HistoryWindowTest, anEngineThatGoesIsToldAndPlaceAndChoiceOutliveItsReturn)
{
    source.addRows(600);
    open();
    messages()->scrollToBottom();
    ASSERT_TRUE(waitUntil([&] { return messages()->model()->rowCount() > 300; }));
    choose(messages(), 300);
    ASSERT_TRUE(waitUntil([&] { return messages()->model()->rowCount() == 600; }));
    const int place = messages()->verticalScrollBar()->value();
    ASSERT_GT(place, 0);
    Q_EMIT source.failed({SourceFailure::Kind::NoEngine, u"gone"_s});
    EXPECT_EQ(control<QLabel>("lblStatus")->text(), u"gone"_s);
    EXPECT_FALSE(control("btnRetry")->isHidden());
    source.addRow(MessageState::Waiting, u"699"_s, u"new"_s);
    const int rows = messages()->model()->rowCount();
    Q_EMIT source.returned();
    ASSERT_TRUE(waitUntil([&] { return messages()->model()->rowCount() == rows + 1; }));
    EXPECT_TRUE(control<QLabel>("lblStatus")->text().isEmpty());
    EXPECT_TRUE(control("btnRetry")->isHidden());
    EXPECT_EQ(messages()->currentIndex().row(), 301);
    EXPECT_GE(messages()->verticalScrollBar()->value(), place);
}

TEST_F(HistoryWindowTest, whatWasSearchedForInVainIsFoundWhenTheEngineReturns)
{
    openWithOneOfEach();
    source.isAway = true;
    control<QLineEdit>("txtSearch")->setText(u"605"_s);
    ASSERT_TRUE(waitUntil([&] { return !control<QLabel>("lblStatus")->text().isEmpty(); }));
    source.isAway = false;
    Q_EMIT source.returned();
    EXPECT_TRUE(hasPhones({u"605"_s}));
}

TEST_F(HistoryWindowTest, aSearchThatFailsIsToldAndTheNextOneClearsThat)
{
    openWithOneOfEach();
    source.isAway = true;
    control<QLineEdit>("txtSearch")->setText(u"qq"_s);
    EXPECT_TRUE(
        waitUntil([&] { return control<QLabel>("lblStatus")->text() == u"the engine is away"_s; }));
    EXPECT_FALSE(control("btnRetry")->isHidden());
    source.isAway = false;
    control<QLineEdit>("txtSearch")->setText(u"605"_s);
    ASSERT_TRUE(hasPhones({u"605"_s}));
    EXPECT_TRUE(control<QLabel>("lblStatus")->text().isEmpty());
    EXPECT_TRUE(control("btnRetry")->isHidden());
}

TEST_F(HistoryWindowTest, withNothingChosenNothingCanBeDone)
{
    openWithOneOfEach();
    for (const char *const name : {"btnSendAgain", "btnAnswer", "btnOptOut"})
        EXPECT_FALSE(button(name)->isEnabled()) << name;
    choose(messages(), 0);
    control<QLineEdit>("txtSearch")->setText(u"605"_s);
    ASSERT_TRUE(hasPhones({u"605"_s}));
    for (const char *const name : {"btnSendAgain", "btnAnswer", "btnOptOut"})
        EXPECT_FALSE(button(name)->isEnabled()) << name;
    EXPECT_TRUE(
        controlOf<QPlainTextEdit>(*tabOf(messages()), "txtMessage")->toPlainText().isEmpty());
}

} // namespace

} // namespace norvane
