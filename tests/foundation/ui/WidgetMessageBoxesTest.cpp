#include "foundation/ui/WidgetMessageBoxes.h"

#include <QApplication>
#include <QDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <functional>

#include <malloc.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Answer = MessageBoxes::Answer;
using Buttons = MessageBoxes::Buttons;
using Icon = MessageBoxes::Icon;

/// Hands the box that is about to be shown to `handle`, which has to close it.
void whenShown(const std::function<void(QMessageBox &)> &handle)
{
    QTimer::singleShot(0, qApp, [handle] {
        auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        ASSERT_TRUE(box);
        handle(*box);
    });
}

Answer answerOf(Buttons buttons, const std::function<void(QMessageBox &)> &handle)
{
    whenShown(handle);
    return WidgetMessageBoxes().show(u"Text"_s, Icon::Question, buttons, u"Title"_s);
}

TEST(WidgetMessageBoxesTest, textAndTitleAreShownAsTheyStand)
{
    QString text;
    QString title;
    Qt::TextFormat format = Qt::RichText;
    whenShown([&](QMessageBox &box) {
        text = box.text();
        title = box.windowTitle();
        format = box.textFormat();
        EXPECT_TRUE(box.isModal());
        box.button(QMessageBox::Ok)->click();
    });
    WidgetMessageBoxes().show(u"<b>a</b>\r\nb"_s, Icon::Critical, Buttons::Ok, u"Norvane SMS"_s);
    EXPECT_EQ(text, u"<b>a</b>\r\nb"_s);
    EXPECT_EQ(title, u"Norvane SMS"_s);
    EXPECT_EQ(format, Qt::PlainText);
}

TEST(WidgetMessageBoxesTest, boxIsWideEnoughForItsTitle)
{
    const QString title = u"Norvane SMS - Load Resource File"_s;
    int width = 0;
    whenShown([&](QMessageBox &box) {
        width = box.width();
        EXPECT_GT(width, 2 * box.fontMetrics().horizontalAdvance(title) * 3 / 4 + 100);
        box.accept();
    });
    WidgetMessageBoxes().show(u"a"_s, Icon::Critical, Buttons::Ok, title);
    EXPECT_GT(width, 0);
}

TEST(WidgetMessageBoxesTest, eachIconIsTheToolkitsOwn)
{
    const std::pair<Icon, QMessageBox::Icon> rows[] = {
        {Icon::None, QMessageBox::NoIcon},
        {Icon::Critical, QMessageBox::Critical},
        {Icon::Question, QMessageBox::Question},
        {Icon::Exclamation, QMessageBox::Warning},
        {Icon::Information, QMessageBox::Information}};
    for (const auto &[icon, expected] : rows) {
        QMessageBox::Icon shown = QMessageBox::NoIcon;
        whenShown([&](QMessageBox &box) {
            shown = box.icon();
            box.accept();
        });
        WidgetMessageBoxes().show(u"Text"_s, icon, Buttons::Ok, u"Title"_s);
        EXPECT_EQ(shown, expected);
    }
}

TEST(WidgetMessageBoxesTest, boxToReadHasOneButton)
{
    EXPECT_EQ(answerOf(Buttons::Ok,
                       [](QMessageBox &box) {
                           EXPECT_EQ(box.standardButtons(), QMessageBox::Ok);
                           box.button(QMessageBox::Ok)->click();
                       }),
              Answer::Ok);
    EXPECT_EQ(answerOf(Buttons::Ok, [](QMessageBox &box) { box.close(); }), Answer::Ok);
}

TEST(WidgetMessageBoxesTest, questionIsAnsweredByItsButtons)
{
    EXPECT_EQ(answerOf(Buttons::YesNo,
                       [](QMessageBox &box) {
                           EXPECT_EQ(box.standardButtons(), QMessageBox::Yes | QMessageBox::No);
                           box.button(QMessageBox::Yes)->click();
                       }),
              Answer::Yes);
    EXPECT_EQ(
        answerOf(Buttons::YesNo, [](QMessageBox &box) { box.button(QMessageBox::No)->click(); }),
        Answer::No);
}

TEST(WidgetMessageBoxesTest, questionIsAnsweredByItsKeys)
{
    EXPECT_EQ(
        answerOf(Buttons::YesNo, [](QMessageBox &box) { QTest::keyClick(&box, Qt::Key_Escape); }),
        Answer::No);
    EXPECT_EQ(
        answerOf(Buttons::YesNo, [](QMessageBox &box) { QTest::keyClick(&box, Qt::Key_Return); }),
        Answer::Yes);
}

TEST(WidgetMessageBoxesTest, riskyQuestionIsAnsweredNoByTheEnterKey)
{
    EXPECT_EQ(answerOf(Buttons::YesNoDefaultNo,
                       [](QMessageBox &box) { QTest::keyClick(&box, Qt::Key_Return); }),
              Answer::No);
    EXPECT_EQ(answerOf(Buttons::YesNoDefaultNo,
                       [](QMessageBox &box) { box.button(QMessageBox::Yes)->click(); }),
              Answer::Yes);
}

TEST(WidgetMessageBoxesTest, buttonThatIsPressedHasTheFocus)
{
    answerOf(Buttons::YesNo, [](QMessageBox &box) {
        QApplication::setActiveWindow(&box);
        QAbstractButton *const no = box.button(QMessageBox::No);
        EXPECT_FALSE(no->hasFocus());
        Q_EMIT no->pressed();
        EXPECT_TRUE(no->hasFocus());
        no->click();
    });
}

/// The window that a box stands over.
QWidget *ownerOfABox()
{
    QWidget *owner = nullptr;
    answerOf(Buttons::Ok, [&](QMessageBox &box) {
        owner = box.parentWidget();
        box.accept();
    });
    return owner;
}

TEST(WidgetMessageBoxesTest, boxStandsOverTheActiveWindow)
{
    QWidget console;
    QWidget other;
    console.show();
    other.show();
    for (QWidget *const active : {&console, &other}) {
        QApplication::setActiveWindow(active);
        EXPECT_EQ(ownerOfABox(), active);
    }
}

TEST(WidgetMessageBoxesTest, boxStandsOverTheConsoleWhileNoWindowIsActive)
{
    QWidget console;
    console.show();
    {
        QDialog dialog(&console); // as it was before it was closed
        dialog.setModal(true);
        dialog.show();
        QApplication::setActiveWindow(nullptr);
        EXPECT_EQ(ownerOfABox(), &dialog);
        dialog.hide();
        QApplication::setActiveWindow(nullptr);
        EXPECT_EQ(ownerOfABox(), &console);
    }
    console.showMinimized();
    EXPECT_EQ(ownerOfABox(), nullptr) << "it could not be seen";
}

TEST(WidgetMessageBoxesTest, manyBoxesTakeNoMoreMemoryThanAFew)
{
    const auto show = [](int boxes) {
        for (int i = 0; i < boxes; ++i)
            answerOf(Buttons::Ok, [](QMessageBox &box) {
                box.grab();
                box.accept();
            });
    };
    show(150); // fills what the toolkit keeps of its drawings
    const size_t before = mallinfo2().uordblks;
    show(300);
    EXPECT_LT(mallinfo2().uordblks, before + (1 << 20));
}

} // namespace

} // namespace norvane
