#include "NorvaneHistory/HistoryFixture.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QApplication>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QScrollBar>
#include <QTabWidget>
#include <QTableWidget>
#include <QTest>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

constexpr int tabs = 3;

class HistoryAccessTest : public HistoryFixture, public ::testing::WithParamInterface<const char *>
{
protected:
    HistoryAccessTest() : HistoryFixture(QLatin1String(GetParam())) {}

    void SetUp() override
    {
        source.addRow(MessageState::InDoubt, u"601"_s, u"one"_s);
        source.addRow(MessageState::Failed, u"602"_s, u"two"_s);
        source.inbox = {{1, u"2026-01-01T00:00:00"_s, {}, u"600"_s, u"hello"_s, false}};
        source.steps.insert(2, {{u"2026-01-01T00:00:00"_s, HistoryStep::Queued, 0, 0, {}}});
        source.summary.delays = {{10, 7}};
        open();
        window->activateWindow();
        choose(messages(), 0);
        choose(inbox(), 0);
        EXPECT_TRUE(waitUntil([&] {
            return control<QTableWidget>("tblSteps")->rowCount() == 1 &&
                   controlOf<QAbstractButton>(*tabOf(messages()), "btnOptOut")->isEnabled() &&
                   controlOf<QAbstractButton>(*tabOf(inbox()), "btnOptOut")->isEnabled();
        }));
    }

    /// Controls that take part in the keyboard's round.
    QList<QWidget *> reachable() const
    {
        QList<QWidget *> found;
        for (QWidget *const each : window->findChildren<QWidget *>()) {
            const bool isPart = qobject_cast<QAbstractSpinBox *>(each->parentWidget()) ||
                                qobject_cast<QComboBox *>(each->parentWidget());
            if ((each->focusPolicy() & Qt::TabFocus) && each->isVisible() && each->isEnabled() &&
                !isPart && !each->focusProxy())
                found.append(each);
        }
        return found;
    }
};

INSTANTIATE_TEST_SUITE_P(Each, HistoryAccessTest, ::testing::Values("ESN", "CAT", "PTG"),
                         [](const auto &language) { return std::string(language.param); });

TEST_P(HistoryAccessTest, everyControlHasANameForScreenReaders)
{
    for (int tab = 0; tab < tabs; ++tab) {
        showTab(tab);
        const QList<QWidget *> controls = reachable();
        EXPECT_GT(controls.size(), 2);
        for (QWidget *const each : controls) {
            const auto *const told = QAccessible::queryAccessibleInterface(each);
            ASSERT_NE(told, nullptr);
            // The toolkit may name a list to choose from by its entry.
            const QString name = qobject_cast<QComboBox *>(each) ? each->accessibleName()
                                                                 : told->text(QAccessible::Name);
            EXPECT_FALSE(name.isEmpty()) << tab << qPrintable(each->objectName());
            EXPECT_FALSE(name.contains(u'&')) << qPrintable(name);
        }
    }
}

TEST_P(HistoryAccessTest, everyCellCanBeRead)
{
    const auto check = [](QTableView *view) {
        auto *const told = QAccessible::queryAccessibleInterface(view);
        ASSERT_NE(told, nullptr);
        EXPECT_FALSE(told->text(QAccessible::Name).isEmpty());
        auto *const table = told->tableInterface();
        ASSERT_NE(table, nullptr);
        ASSERT_EQ(table->rowCount(), view->model()->rowCount());
        ASSERT_GT(table->rowCount(), 0);
        for (int row = 0; row < table->rowCount(); ++row) {
            for (int column = 0; column < table->columnCount(); ++column) {
                const QModelIndex index = view->model()->index(row, column);
                const QString heard = index.data(Qt::AccessibleTextRole).toString();
                EXPECT_EQ(table->cellAt(row, column)->text(QAccessible::Name),
                          heard.isEmpty() ? index.data().toString() : heard);
            }
        }
    };
    check(messages());
    check(control<QTableWidget>("tblSteps"));
    showTab(1);
    check(inbox());
    showTab(2);
    ASSERT_TRUE(waitUntil([&] { return control<QTableWidget>("tblDelays")->rowCount() == 1; }));
    check(control<QTableWidget>("tblDays"));
    check(control<QTableWidget>("tblDelays"));
}

TEST_P(HistoryAccessTest, everyActionIsReachedByTheTabKey)
{
    for (int tab = 0; tab < tabs; ++tab) {
        showTab(tab);
        const QList<QWidget *> expected = reachable();
        QList<QWidget *> reached;
        for (qsizetype press = 0; press < expected.size() + 10; ++press) {
            QWidget *const focus = QApplication::focusWidget();
            ASSERT_NE(focus, nullptr);
            reached.append(focus);
            QTest::keyClick(focus, Qt::Key_Tab);
        }
        for (QWidget *const each : expected)
            EXPECT_TRUE(reached.contains(each)) << tab << qPrintable(each->objectName());
    }
}

TEST_P(HistoryAccessTest, theTabKeyGoesFromTheTopToTheBottom)
{
    const QStringList expected[] = {
        {u"txtSearch"_s, u"cboRange"_s, u"qt_tabwidget_tabbar"_s, u"chkState(1)"_s,
         u"chkState(2)"_s, u"chkState(4)"_s, u"chkState(8)"_s, u"chkState(16)"_s, u"chkState(32)"_s,
         u"grdMessages"_s, u"txtMessage"_s, u"tblSteps"_s, u"btnSendAgain"_s, u"btnAnswer"_s,
         u"btnOptOut"_s, u"btnExport"_s, u"btnPrint"_s, u"txtSearch"_s},
        {u"txtSearch"_s, u"cboRange"_s, u"qt_tabwidget_tabbar"_s, u"chkUnreadOnly"_s, u"grdInbox"_s,
         u"txtMessage"_s, u"btnAnswer"_s, u"btnOptOut"_s, u"btnExport"_s, u"btnPrint"_s,
         u"txtSearch"_s}};
    for (int tab = 0; tab < 2; ++tab) {
        showTab(tab);
        control("txtSearch")->setFocus();
        QStringList reached;
        for (qsizetype press = 0; press < expected[tab].size(); ++press) {
            QWidget *const focus = QApplication::focusWidget();
            ASSERT_NE(focus, nullptr);
            reached << focus->objectName();
            QTest::keyClick(focus, Qt::Key_Tab);
        }
        EXPECT_EQ(reached, expected[tab]);
    }
}

TEST_P(HistoryAccessTest, noTwoControlsOfATabShareAMnemonic)
{
    Q_EMIT source.failed({SourceFailure::Kind::NoEngine, u"gone"_s}); // which shows a button more
    for (int tab = 0; tab < tabs; ++tab) {
        showTab(tab);
        ASSERT_TRUE(control("btnRetry")->isVisible());
        QStringList captions;
        for (const QLabel *const label : window->findChildren<QLabel *>()) {
            if (label->isVisible() && label->isEnabled() && label->buddy())
                captions << label->text();
        }
        for (const QAbstractButton *const button : window->findChildren<QAbstractButton *>()) {
            if (button->isVisible() && button->isEnabled())
                captions << button->text();
        }
        for (int at = 0; at < tabs; ++at)
            captions << control<QTabWidget>("tabs")->tabText(at);
        QHash<QChar, QString> byKey;
        for (const QString &caption : captions) {
            const qsizetype sign = caption.indexOf(u'&');
            if (sign < 0)
                continue;
            const QChar key = caption.at(sign + 1).toLower();
            EXPECT_FALSE(byKey.contains(key))
                << qPrintable(caption) << " and " << qPrintable(byKey.value(key));
            byKey.insert(key, caption);
        }
        EXPECT_GE(byKey.size(), 4);
    }
}

TEST_P(HistoryAccessTest, captionsFitTheirControls)
{
    for (int tab = 0; tab < tabs; ++tab) {
        showTab(tab);
        for (const QAbstractButton *const button : window->findChildren<QAbstractButton *>()) {
            if (button->isVisible() && !button->text().isEmpty()) {
                EXPECT_GE(button->width(), button->sizeHint().width())
                    << qPrintable(button->text());
            }
        }
    }
    const QHeaderView &header = *messages()->horizontalHeader();
    for (int column = 0; column < header.count(); ++column)
        EXPECT_GE(header.sectionSize(column), header.sectionSizeHint(column));
}

TEST_P(HistoryAccessTest, theSearchFieldHasTheFocusFirstAndByItsKeys)
{
    EXPECT_EQ(QApplication::focusWidget(), control("txtSearch"));
    messages()->setFocus();
    QTest::keySequence(window.get(), QKeySequence::Find);
    EXPECT_EQ(QApplication::focusWidget(), control("txtSearch"));
}

} // namespace

} // namespace norvane
