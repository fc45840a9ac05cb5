#include "NorvaneHistory/HistoryFixture.h"

#include "foundation/ui/MessageEdit.h"

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTimer>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class HistoryInboxTest : public HistoryFixture
{
protected:
    void SetUp() override
    {
        for (qint64 id = 4; id >= 1; --id)
            source.inbox.append({id,
                                 u"2026-01-01T00:00:0%1"_s.arg(id),
                                 {},
                                 u"60%1"_s.arg(id),
                                 u"answer %1"_s.arg(id),
                                 id == 2});
        open();
        showTab(1);
    }

    bool isBold(int row) const
    {
        return inbox()->model()->index(row, 2).data(Qt::FontRole).value<QFont>().bold();
    }
    int rows() const { return inbox()->model()->rowCount(); }
};

TEST_F(HistoryInboxTest, whatIsUnreadIsBoldAndSaidToBe)
{
    EXPECT_EQ(QList<bool>({isBold(0), isBold(1), isBold(2), isBold(3)}),
              QList<bool>({true, true, false, true}));
    EXPECT_EQ(inbox()->model()->index(0, 0).data(Qt::AccessibleTextRole).toString(),
              u"01/01/2026 00:00:04, sin leer"_s);
    EXPECT_EQ(inbox()->model()->index(2, 0).data(Qt::AccessibleTextRole).toString(),
              u"01/01/2026 00:00:02"_s);
}

TEST_F(HistoryInboxTest, whatIsOpenedIsMarkedReadAndNothingElse)
{
    choose(inbox(), 1);
    EXPECT_EQ(source.markedRead, QList<qint64>{3});
    EXPECT_FALSE(isBold(1));
    EXPECT_TRUE(isBold(0));
    choose(inbox(), 2); // is read already
    EXPECT_EQ(source.markedRead, QList<qint64>{3});
    EXPECT_EQ(controlOf<QPlainTextEdit>(*tabOf(inbox()), "txtMessage")->toPlainText(),
              u"answer 2"_s);
}

TEST_F(HistoryInboxTest, whatCanNotBeMarkedStaysUnreadAndThatIsTold)
{
    source.isAway = true;
    choose(inbox(), 1);
    EXPECT_TRUE(waitUntil([&] { return isBold(1); }));
    EXPECT_EQ(control<QLabel>("lblStatus")->text(),
              u"El mensaje sigue sin leer. the engine is away"_s);
    source.isAway = false;
    choose(inbox(), 0);
    choose(inbox(), 1);
    EXPECT_EQ(source.markedRead, (QList<qint64>{4, 3}));
}

TEST_F(HistoryInboxTest, whoWantsNoMoreIsShownSoAtOnce)
{
    choose(inbox(), 3);
    auto *const button = controlOf<QPushButton>(*tabOf(inbox()), "btnOptOut");
    ASSERT_TRUE(waitUntil([&] { return button->isEnabled(); }));
    const QString before = button->text();
    source.optOuts.insert(u"601"_s);
    Q_EMIT source.changed();
    EXPECT_TRUE(waitUntil([&] { return button->text() != before; }));
}

TEST_F(HistoryInboxTest, theFirstMessageIsNotOpenedByItself)
{
    EXPECT_TRUE(source.markedRead.isEmpty());
    source.inbox.prepend({5, u"2026-01-01T00:00:05"_s, {}, u"605"_s, u"new"_s, false});
    Q_EMIT source.changed();
    ASSERT_TRUE(waitUntil([&] { return rows() == 5; }));
    EXPECT_TRUE(source.markedRead.isEmpty());
    EXPECT_TRUE(isBold(0));
}

TEST_F(HistoryInboxTest, whatIsReadAmongTheUnreadOnesStaysUntilTheyAreAskedForAgain)
{
    control<QCheckBox>("chkUnreadOnly")->setChecked(true);
    ASSERT_TRUE(waitUntil([&] { return rows() == 3; }));
    choose(inbox(), 1);
    source.inbox.prepend({5, u"2026-01-01T00:00:05"_s, {}, u"605"_s, u"new"_s, false});
    Q_EMIT source.changed();
    ASSERT_TRUE(waitUntil([&] { return rows() == 4; }));
    EXPECT_EQ(inbox()->currentIndex().row(), 2);
    EXPECT_EQ(source.markedRead, QList<qint64>{3});
    control<QCheckBox>("chkUnreadOnly")->setChecked(false);
    control<QCheckBox>("chkUnreadOnly")->setChecked(true);
    EXPECT_TRUE(waitUntil([&] { return rows() == 3; }));
}

TEST_F(HistoryInboxTest, whatIsReadWhileTheListIsAskedForIsReadAndThereOnce)
{
    control<QCheckBox>("chkUnreadOnly")->setChecked(true);
    ASSERT_TRUE(waitUntil([&] { return rows() == 3; }));
    source.hold();
    Q_EMIT source.changed();
    choose(inbox(), 1);
    source.release();
    ASSERT_EQ(rows(), 3);
    EXPECT_EQ(cell(*inbox(), 0, 2), u"answer 4"_s);
    EXPECT_EQ(cell(*inbox(), 1, 2), u"answer 3"_s);
    EXPECT_EQ(cell(*inbox(), 2, 2), u"answer 1"_s);
    EXPECT_FALSE(isBold(1));
    EXPECT_EQ(inbox()->currentIndex().row(), 1);
}

TEST_F(HistoryInboxTest, aMessageThatIsChosenBeforeItIsThereIsReadWhenItComes)
{
    constexpr int count = 40 * 250;
    source.inbox.clear();
    for (qint64 id = count; id >= 1; --id)
        source.inbox.append({id,
                             u"2026-01-01T%1"_s.arg(id, 6, 10, QChar(u'0')),
                             {},
                             u"600"_s,
                             u"answer %1"_s.arg(id),
                             false});
    Q_EMIT source.connected();
    ASSERT_TRUE(waitUntil([&] {
        inbox()->model()->fetchMore({});
        return rows() == count;
    }));
    constexpr int row = 7 * 250;
    ASSERT_EQ(cell(*inbox(), row, 2), QString()); // let go
    choose(inbox(), row);
    const auto *const text = controlOf<QPlainTextEdit>(*tabOf(inbox()), "txtMessage");
    EXPECT_TRUE(text->toPlainText().isEmpty());
    ASSERT_TRUE(waitUntil([&] { return !text->toPlainText().isEmpty(); }));
    EXPECT_EQ(text->toPlainText(), u"answer %1"_s.arg(count - row));
    EXPECT_EQ(source.markedRead, QList<qint64>{count - row});
}

TEST_F(HistoryInboxTest, theSearchFieldSearchesWhatWasReceivedToo)
{
    control<QLineEdit>("txtSearch")->setText(u"602"_s);
    EXPECT_TRUE(waitUntil([&] { return rows() == 1; }));
    EXPECT_EQ(cell(*inbox(), 0, 2), u"answer 2"_s);
}

TEST_F(HistoryInboxTest, aReceivedMessageIsAnswered)
{
    choose(inbox(), 0);
    QTimer::singleShot(0, window.get(), [&] {
        QWidget *const sheet = QApplication::activeModalWidget();
        ASSERT_NE(sheet, nullptr);
        controlOf<MessageEdit>(*sheet, "txtMessage")->setText(u"ok"_s);
        controlOf<QPushButton>(*sheet, "btnSend")->click();
    });
    controlOf<QPushButton>(*tabOf(inbox()), "btnAnswer")->click();
    EXPECT_EQ(source.sent, (QList<FakeSource::Sent>{{u"604"_s, u"ok"_s}}));
}

TEST_F(HistoryInboxTest, aSenderIsPutOnTheListOfOptOuts)
{
    choose(inbox(), 3);
    auto *const button = controlOf<QPushButton>(*tabOf(inbox()), "btnOptOut");
    ASSERT_TRUE(waitUntil([&] { return button->isEnabled(); }));
    button->click();
    EXPECT_EQ(source.optOuts, QSet<QString>{u"601"_s});
}

} // namespace

} // namespace norvane
