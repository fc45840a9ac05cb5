#include "NorvaneSMS/import/frmImport.h"
#include "NorvaneSMS/queue/Fixture.h"
#include "foundation/Globals.h"
#include "system/WholePath.h"

#include <QApplication>
#include <QComboBox>
#include <QTimer>

namespace norvane {

using namespace Qt::StringLiterals;

/// The import button of the real window over the real engine and a simulated device.
class BulkWholePath : public WholePath
{
protected:
    /// Imports the file at `path`; of a spreadsheet, a field of its first sheet.
    void import(const QString &path, const QString &field = {})
    {
        QTimer::singleShot(0, console.get(), [&] {
            auto *const form = console->findChild<frmImport *>();
            ASSERT_NE(form, nullptr);
            QApplication::setActiveWindow(form);
            if (!field.isEmpty()) {
                auto *const format = form->findChild<QComboBox *>(u"cboFileFormat"_s);
                format->setCurrentIndex(1);
                Q_EMIT format->activated(1);
            }
            form->findChild<QLineEdit *>(u"txtFilePath"_s)->setFocus();
            QTest::keyClicks(form->findChild<QLineEdit *>(u"txtFilePath"_s), path);
            auto *const fields = form->findChild<QComboBox *>(u"cboField"_s);
            fields->setFocus();
            if (!field.isEmpty())
                fields->setCurrentText(field);
            QTest::mouseClick(form->findChild<QPushButton *>(u"btnImport"_s), Qt::LeftButton);
        });
        QTest::mouseClick(control<QPushButton>("btnImport"), Qt::LeftButton);
    }

    const QTemporaryDir folder;
};

TEST_F(BulkWholePath, aListsFirstRecipientsReceiveTheirFilledTemplates)
{
    QByteArray lines;
    for (int i = 0; i < 500; ++i)
        lines += QByteArray::number(600000000 + i) + "|N" + QByteArray::number(i) + "\r\n";
    const QString path = folder.filePath(u"list.txt"_s);
    writeFile(path, lines);
    control<MessageEdit>("txtMessage")->setText(u"Olá %1"_s);
    import(path);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().text, GS(3760051));
    waitForReceived(5);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(received(i), u"Ola N%1"_s.arg(i));
        EXPECT_EQ(device->messages().at(i).value(u"number"_s).toString(),
                  QString::number(600000000 + i));
    }
}

TEST_F(BulkWholePath, aSpreadsheetsNumbersReceiveTheMessage)
{
    control<MessageEdit>("txtMessage")->setText(u"Hola %0 %1"_s);
    import(QStringLiteral(NORVANE_TEST_DATA "/import/libreoffice.ods"), GS(0) + u"x"_s);
    ASSERT_EQ(boxes.shown.size(), 1) << "a field that the sheet doesn't have";
    EXPECT_TRUE(boxes.shown.takeFirst().text.startsWith(u"3265 - "_s));

    import(QStringLiteral(NORVANE_TEST_DATA "/import/libreoffice.ods"), u"TEL\u00C9FONO"_s);
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.first().text, GS(3760051));
    waitForReceived(2);
    EXPECT_EQ(received(0), u"Hola 912345678 %1"_s);
    EXPECT_EQ(received(1), u"Hola 34600123456 %1"_s);
}

} // namespace norvane
