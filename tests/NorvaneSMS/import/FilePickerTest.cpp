#include "NorvaneSMS/import/FilePicker.h"

#include "NorvaneSMS/queue/Fixture.h"

#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QFileDialog>
#include <QLineEdit>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <functional>

namespace norvane {

using namespace Qt::StringLiterals;

/// The toolkit's dialog, which a test answers by key.
class ToolkitPicker : public ::testing::Test
{
protected:
    FilePicker::Outcome pick(const std::function<void(QFileDialog &)> &act)
    {
        QTimer::singleShot(0, [&] {
            auto *const dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            ASSERT_NE(dialog, nullptr);
            QApplication::setActiveWindow(dialog);
            act(*dialog);
            if (dialog->isVisible())
                dialog->reject();
        });
        return toolkitFilePicker().pick(
            {nullptr, FilePicker::PathMustExist | FilePicker::FileMustExist, QString(), u"TXT"_s,
             u"title"_s, u"Texto(*.txt)|*.txt"_s, folder.path(), FilePicker::Purpose::Open});
    }
    FilePicker::Outcome pickTyping(const QString &name)
    {
        return pick([&](QFileDialog &dialog) {
            auto *const box = dialog.findChild<QLineEdit *>(u"fileNameEdit"_s);
            box->setFocus();
            box->setText(name);
            QTest::keyClick(box, Qt::Key_Return);
            stayedOpen = dialog.isVisible();
        });
    }

    const QTemporaryDir folder;
    bool stayedOpen = false;
};

TEST_F(ToolkitPicker, beginsInTheFolderWithTheFirstFilterAndNoName)
{
    const auto outcome = pick([&](QFileDialog &dialog) {
        EXPECT_EQ(dialog.windowTitle(), u"title"_s);
        EXPECT_EQ(dialog.acceptMode(), QFileDialog::AcceptOpen);
        EXPECT_EQ(dialog.directory(), QDir(folder.path()));
        EXPECT_EQ(dialog.selectedNameFilter(), u"Texto (*.txt)"_s);
        EXPECT_EQ(dialog.findChild<QLineEdit *>(u"fileNameEdit"_s)->text(), QString());
        QTest::keyClick(&dialog, Qt::Key_Escape);
    });
    EXPECT_FALSE(outcome.confirmed);
    EXPECT_EQ(outcome.errorCode, 0U);
}

TEST_F(ToolkitPicker, givesTheFullPathOfWhatIsTyped)
{
    const QString path = folder.filePath(u"list.txt"_s);
    writeFile(path);
    for (const QString &typed : {u"list.txt"_s, u"list"_s, path}) {
        const auto outcome = pickTyping(typed);
        EXPECT_TRUE(outcome.confirmed) << typed.toStdString();
        EXPECT_EQ(outcome.path, path);
    }
    // The filter hides other files, and doesn't refuse them.
    writeFile(folder.filePath(u"book.ods"_s));
    EXPECT_EQ(pickTyping(u"book.ods"_s).path, folder.filePath(u"book.ods"_s));
}

TEST_F(ToolkitPicker, doesNotTakeAFileThatIsNotThere)
{
    QTimer::singleShot(0, qApp, [] {
        QTimer::singleShot(0, qApp, [] {
            if (QWidget *const box = QApplication::activeModalWidget())
                QTest::keyClick(box, Qt::Key_Return);
        });
    });
    EXPECT_FALSE(pickTyping(u"none.txt"_s).confirmed);
    EXPECT_TRUE(stayedOpen);
}

TEST_F(ToolkitPicker, doesNotTakeAFileThatTheToolkitHasInItself)
{
    QDirIterator files(u":/qt-project.org"_s, QDir::Files, QDirIterator::Subdirectories);
    ASSERT_TRUE(files.hasNext());
    EXPECT_FALSE(pickTyping(files.next()).confirmed);
    EXPECT_TRUE(stayedOpen);
}

TEST_F(ToolkitPicker, aPathLongerThanTheBufferIsItsFailure)
{
    const QString deep = folder.filePath(QString(90, u'a') + u'/' + QString(90, u'b'));
    ASSERT_TRUE(QDir().mkpath(deep));
    const qsizetype left = FilePicker::bufferLength - 1 - deep.size() - 1 - 4;
    ASSERT_GT(left, 0);
    for (const auto &[name, fits] : {std::pair{QString(left, u'c') + u".txt"_s, true},
                                     std::pair{QString(left + 1, u'c') + u".txt"_s, false}}) {
        writeFile(deep + u'/' + name);
        const auto outcome = pickTyping(deep + u'/' + name);
        EXPECT_EQ(outcome.confirmed, fits);
        EXPECT_EQ(outcome.errorCode, fits ? 0U : FilePicker::bufferTooSmall);
    }
}

} // namespace norvane
