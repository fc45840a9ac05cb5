#include "system/WholePath.h"

#include "NorvaneSMS/console/QueueGridModel.h"
#include "NorvaneSMS/console/QueueGridReading.h"

#include <QApplication>
#include <QHash>
#include <QSet>

#include <random>

namespace norvane {

using namespace Qt::StringLiterals;

/// The queue's grid over the real engine.
class QueueGridOnEngine : public QueueGridReading<WholePath>
{
protected:
    bool waitForRows(int count)
    {
        return eventually([&] { return grid()->rows() == count; });
    }

    static QDateTime later(int seconds = 0)
    {
        return QDateTime(QDate(2100, 1, 1), QTime(0, 0), Qt::UTC).addSecs(seconds);
    }
    static QDateTime due() { return {QDate(2020, 1, 1), QTime(0, 0), Qt::UTC}; }

    void edit(int row, int column, const QString &typed)
    {
        QApplication::setActiveWindow(console.get());
        grid()->setFocus();
        grid()->setCurrentIndex(cell(row, column));
        QTest::keyClick(grid(), Qt::Key_F2);
        ASSERT_NE(editor(), nullptr);
        editor()->selectAll();
        QTest::keyClicks(editor(), typed);
        QTest::keyClick(editor(), Qt::Key_Return);
    }
    void deleteRows(const QList<int> &rows)
    {
        grid()->setCurrentIndex(cell(rows.first(), 0));
        for (const int row : rows)
            grid()->selectionModel()->select(cell(row, 0), QItemSelectionModel::Select |
                                                               QItemSelectionModel::Rows);
        QTest::keyClick(grid(), Qt::Key_Delete);
    }
    /// What the engine has, by phone.
    QHash<QString, QString> queued()
    {
        QHash<QString, QString> messages;
        const QueueRecordSet records = makeProxy()->GetQueue();
        for (const QueueRow &row : records.rows())
            messages.insert(row.phone, row.message);
        return messages;
    }
    void queueForLater(int count)
    {
        const auto proxy = makeProxy();
        for (int i = 1; i <= count; ++i)
            proxy->AddSMS(u"60%1"_s.arg(i), u"text %1"_s.arg(i), later(i));
        ASSERT_TRUE(waitForRows(count));
    }
    void stopEngine()
    {
        makeProxy()->StopEngine();
        ASSERT_TRUE(eventually([&] { return label("lblEngineStatus") == GS(3760026); }));
    }
    void startEngine()
    {
        makeProxy()->StartEngine();
        ASSERT_TRUE(eventually([&] { return label("lblEngineStatus") == GS(3760014); }));
    }
};

TEST_F(QueueGridOnEngine, anEditReachesTheEngineAtOnce)
{
    queueForLater(3);
    startEngine();
    edit(2, 1, u"911222333"_s);
    edit(3, 2, u"another text"_s);
    EXPECT_EQ(queued(), (QHash<QString, QString>{{u"601"_s, u"text 1"_s},
                                                 {u"911222333"_s, u"text 2"_s},
                                                 {u"603"_s, u"another text"_s}}));
    EXPECT_TRUE(eventually([&] { return text(2, 1) == u"911222333"_s; }));
}

TEST_F(QueueGridOnEngine, theFirstRowIsHeldWhileTheEngineRunsAndFreeWhenItStands)
{
    queueForLater(2);
    startEngine();
    grid()->setCurrentIndex(cell(1, 1));
    QTest::keyClick(grid(), Qt::Key_F2);
    EXPECT_EQ(editor(), nullptr);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().text, GS(3760022));
    stopEngine();
    edit(1, 1, u"1"_s);
    EXPECT_TRUE(queued().contains(u"1"_s));
}

TEST_F(QueueGridOnEngine, deletedRowsLeaveTheEnginesQueue)
{
    queueForLater(5);
    deleteRows({2, 4});
    EXPECT_EQ(queued().size(), 3);
    EXPECT_FALSE(queued().contains(u"602"_s));
    EXPECT_FALSE(queued().contains(u"604"_s));
    EXPECT_TRUE(eventually([&] { return label("lblQueueSize") == GS(3760025, 3); }));
    EXPECT_EQ(grid()->rows(), 3);
}

TEST_F(QueueGridOnEngine, aDeletionWithTheFirstRowKeepsItWhileTheEngineRuns)
{
    queueForLater(3);
    startEngine();
    deleteRows({1, 2, 3});
    EXPECT_EQ(queued().keys(), QStringList{u"601"_s});
    EXPECT_EQ(boxes.shown.last().text, GS(3760020));
}

TEST_F(QueueGridOnEngine, thousandsOfRowsAreDeletedAtOnce)
{
    constexpr int count = 3000;
    SMSList list;
    for (int i = 1; i <= count; ++i)
        list.Add(QString::number(i), u"x"_s);
    makeProxy()->AddSMSList(list, later());
    ASSERT_TRUE(waitForRows(count));
    grid()->setCurrentIndex(cell(1, 0));
    grid()->selectAll();
    QTest::keyClick(grid(), Qt::Key_Delete);
    EXPECT_EQ(grid()->rows(), 0);
    EXPECT_EQ(makeProxy()->GetQueueSize(), 0);
}

TEST_F(QueueGridOnEngine, whatCameSinceTheGridWasFilledSurvivesEditsAndDeletions)
{
    queueForLater(2);
    // Not yet seen by the grid: no event is handled until the deletion is through.
    makeProxy()->AddSMS(u"700"_s, u"unseen"_s, later(-10));
    ASSERT_EQ(grid()->rows(), 2);
    deleteRows({1});
    EXPECT_EQ(queued().keys().size(), 2);
    EXPECT_TRUE(queued().contains(u"700"_s));
    EXPECT_TRUE(queued().contains(u"602"_s));
}

TEST_F(QueueGridOnEngine, anEditOfAMessageThatWasSentMeanwhileRevivesNothing)
{
    stopEngine();
    const auto proxy = makeProxy();
    proxy->AddSMS(u"601"_s, u"old text"_s, due());
    ASSERT_TRUE(waitForRows(1));
    // The editor is open while the message goes out; the grid has not heard of it yet.
    QApplication::setActiveWindow(console.get());
    grid()->setFocus();
    grid()->setCurrentIndex(cell(1, 2));
    QTest::keyClick(grid(), Qt::Key_F2);
    ASSERT_NE(editor(), nullptr);
    editor()->setText(u"new text"_s);
    proxy->StartEngine();
    // Without the event loop, so that the grid doesn't hear of it.
    while (device->messages().isEmpty() || proxy->GetQueueSize() > 0)
        QThread::yieldCurrentThread();
    QTest::keyClick(editor(), Qt::Key_Return);
    EXPECT_TRUE(waitForRows(0));
    EXPECT_TRUE(eventually([&] {
        return control<TerminalView>("txtTerm")->text().contains(u"-9"_s);
    })) << "the operator is told that the edit came too late";
    EXPECT_EQ(proxy->GetQueueSize(), 0);
    ASSERT_EQ(device->messages().size(), 1);
    EXPECT_EQ(received(0), u"old text"_s);
}

/// Edits and deletions while the engine sends and other messages arrive: whatever the grid showed
/// when the operator acted, no message is lost, sent twice, revived, or sent with a text that was
/// never its own.
TEST_F(QueueGridOnEngine, editsAndDeletionsRaceWithSending)
{
    constexpr int messages = 120;
    const auto other = makeProxy();
    SMSList list;
    for (int i = 0; i < messages; ++i)
        list.Add(QString::number(1000 + i), u"first %1"_s.arg(1000 + i));
    stopEngine();
    // Slow enough for the operator to get in between, however slow the operator is.
    plugIn({u"--latency"_s, u"25"_s});
    other->AddSMSList(list, due());
    ASSERT_TRUE(waitForRows(messages));
    other->StartEngine();

    std::mt19937 random(20);
    QSet<QString> deleted;
    QSet<QString> added;
    int edits = 0;
    for (int round = 0; round < 60; ++round) {
        // What the operator sees is up to a second old: some rounds handle no event before.
        if (round % 3 != 0)
            QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
        if (round % 4 == 0) {
            const QString phone = QString::number(5000 + round);
            other->AddSMS(phone, u"first "_s + phone, due());
            added.insert(phone);
        }
        if (grid()->rows() < 3)
            continue;
        const int row = 2 + static_cast<int>(random() % static_cast<unsigned>(grid()->rows() - 1));
        const QString phone = text(row, 1);
        if (round % 2 == 0) {
            deleted.insert(phone);
            deleteRows({row});
        } else {
            edit(row, 2, u"edited "_s + phone);
            ++edits;
        }
    }
    ASSERT_TRUE(eventually([&] { return other->GetQueueSize() == 0; }));
    ASSERT_TRUE(waitForRows(0));

    QHash<QString, QString> received;
    for (const QJsonObject &message : device->messages()) {
        const QString phone = message.value(u"number"_s).toString();
        const QString sent = message.value(u"text"_s).toString();
        EXPECT_FALSE(received.contains(phone)) << phone.toStdString() << " was sent twice";
        received.insert(phone, sent);
        EXPECT_TRUE(sent == u"first "_s + phone || sent == u"edited "_s + phone)
            << phone.toStdString() << " got " << sent.toStdString();
    }
    QSet<QString> all = added;
    for (int i = 0; i < messages; ++i)
        all.insert(QString::number(1000 + i));
    for (const QString &phone : std::as_const(all))
        EXPECT_TRUE(received.contains(phone) || deleted.contains(phone))
            << phone.toStdString() << " was lost";
    EXPECT_GT(edits, 10);
    EXPECT_LT(received.size(), all.size()) << "some deletions came in time";
}

TEST_F(QueueGridOnEngine, anEditInProgressLivesThroughTheEnginesEvents)
{
    queueForLater(3);
    startEngine();
    QApplication::setActiveWindow(console.get());
    grid()->setFocus();
    grid()->setCurrentIndex(cell(2, 2));
    QTest::keyClick(grid(), Qt::Key_F2);
    ASSERT_NE(editor(), nullptr);
    editor()->setText(u"half"_s);
    const auto other = makeProxy();
    other->AddSMS(u"700"_s, u"x"_s, later(-5));
    ASSERT_TRUE(waitForRows(4));
    ASSERT_NE(editor(), nullptr);
    QTest::keyClicks(editor(), u" way"_s);
    QTest::keyClick(editor(), Qt::Key_Return);
    EXPECT_EQ(queued().value(u"602"_s), u"half way"_s);
    EXPECT_EQ(queued().value(u"601"_s), u"text 1"_s);
}

TEST_F(QueueGridOnEngine, theQueueIsTheSameWhetherFetchedAtOnceOrChangeByChange)
{
    queueForLater(4);
    const auto follower = makeProxy(); // fetches after each change
    EXPECT_EQ(follower->GetQueue().count(), 4);
    const auto same = [&] {
        const QList<QueueRow> followed = follower->GetQueue().rows();
        EXPECT_EQ(followed, makeProxy()->GetQueue().rows());
        return followed.size();
    };
    edit(3, 2, u"changed"_s);
    EXPECT_EQ(same(), 4);
    deleteRows({2});
    EXPECT_EQ(same(), 3);
    makeProxy()->AddSMS(u"700"_s, u"x"_s, later(-5));
    EXPECT_EQ(same(), 4);
    makeProxy()->AddSMS(u"701"_s, u"due"_s, due());
    startEngine();
    waitForReceived(1);
    ASSERT_TRUE(eventually([&] { return makeProxy()->GetQueueSize() == 4; }));
    EXPECT_EQ(same(), 4);
    makeProxy()->ClearQueue();
    EXPECT_EQ(same(), 0);
}

} // namespace norvane
