#include "NorvaneSMS/device/WidgetFolderBrowser.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class WidgetFolderBrowserTest : public ::testing::Test
{
protected:
    WidgetFolderBrowserTest()
    {
        QDir(root.path()).mkpath(u"Norvane/below"_s);
        QDir(root.path()).mkpath(u"other"_s);
    }

    /// Shows the dialog and runs `act` on it, which is to end it.
    FolderBrowser::Choice browse(const QString &preselected,
                                 const std::function<void(QFileDialog &)> &act)
    {
        QTimer::singleShot(0, [&] {
            auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            QApplication::setActiveWindow(dialog);
            act(*dialog);
            EXPECT_FALSE(dialog->isVisible()) << "the test left the dialog open";
            if (dialog->isVisible())
                dialog->reject();
        });
        return browser.browse(nullptr, u"title"_s, preselected, FolderBrowser::Style::Plain);
    }
    static QLineEdit *pathBox(const QFileDialog &dialog)
    {
        return dialog.findChild<QLineEdit *>(u"fileNameEdit"_s);
    }
    QString at(const char *name) const { return root.filePath(QLatin1String(name)); }

    QTemporaryDir root;
    WidgetFolderBrowser browser;
};

TEST_F(WidgetFolderBrowserTest, theGivenFolderIsSelectedAndConfirmedAsItIs)
{
    const auto choice = browse(at("Norvane"), [&](QFileDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), u"title"_s);
        EXPECT_EQ(dialog.selectedFiles(), QStringList{at("Norvane")});
        QTest::keyClick(pathBox(dialog), Qt::Key_Return);
    });
    EXPECT_TRUE(choice.confirmed);
    EXPECT_EQ(choice.path, at("Norvane"));
}

TEST_F(WidgetFolderBrowserTest, anotherFolderCanBeTyped)
{
    for (const QString &typed : {at("other"), at("Norvane/below"), u"/"_s}) {
        const auto choice = browse(at("Norvane"), [&](QFileDialog &dialog) {
            QLineEdit *const box = pathBox(dialog);
            box->setFocus();
            box->selectAll();
            QTest::keyClicks(box, typed);
            QTest::keyClick(box, Qt::Key_Return);
        });
        EXPECT_TRUE(choice.confirmed);
        EXPECT_EQ(choice.path, typed);
    }
}

TEST_F(WidgetFolderBrowserTest, aFolderThatTheToolkitHasInItselfHasNoPath)
{
    const auto choice = browse(at("Norvane"), [&](QFileDialog &dialog) {
        pathBox(dialog)->setText(u":/qt-project.org"_s);
        QTest::keyClick(pathBox(dialog), Qt::Key_Return);
    });
    EXPECT_TRUE(choice.confirmed);
    EXPECT_EQ(choice.path, std::nullopt);
}

TEST_F(WidgetFolderBrowserTest, onlyFoldersCanBeChosen)
{
    browse(QString(), [&](QFileDialog &dialog) {
        EXPECT_EQ(dialog.fileMode(), QFileDialog::Directory);
        EXPECT_TRUE(dialog.testOption(QFileDialog::ShowDirsOnly));
        dialog.reject();
    });
}

TEST_F(WidgetFolderBrowserTest, cancellingConfirmsNothing)
{
    const auto choice = browse(
        at("Norvane"), [](QFileDialog &dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    EXPECT_FALSE(choice.confirmed);
}

} // namespace

} // namespace norvane
