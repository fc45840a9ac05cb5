#include "NorvaneSMS/look/WindowsFixture.h"

#include "foundation/Globals.h"

#include <QApplication>
#include <QComboBox>
#include <QPushButton>
#include <QTimer>

namespace norvane {

using namespace Qt::StringLiterals;

void WindowsFixture::speak(const QString &language)
{
    goLocalize = std::make_unique<cls_Localize>();
    EXPECT_TRUE(goLocalize->Init(
        QStringLiteral(NORVANE_LANGUAGE_DIR "/NorvaneSMS_%1.XML").arg(language), language));
}

void WindowsFixture::inDialog(const char *button, const std::function<void(QWidget &)> &look)
{
    bool seen = false;
    QTimer::singleShot(0, console.get(), [&] {
        QWidget *const dialog = QApplication::activeModalWidget();
        ASSERT_NE(dialog, nullptr);
        seen = true;
        look(*dialog);
        dialog->close();
    });
    control<QPushButton>(button)->click();
    EXPECT_TRUE(seen);
}

void WindowsFixture::inDeviceDialog(const std::function<void(QWidget &)> &look)
{
    inDialog("btnDeviceConfig", look);
}

void WindowsFixture::inImportDialog(const std::function<void(QWidget &)> &look)
{
    inDialog("btnImport", [&look](QWidget &dialog) {
        auto *const format = dialog.findChild<QComboBox *>(u"cboFileFormat"_s);
        ASSERT_NE(format, nullptr);
        format->setCurrentIndex(1);
        Q_EMIT format->activated(1);
        look(dialog);
    });
}

void WindowsFixture::inEveryWindow(const std::function<void(QWidget &)> &look)
{
    loadAsServer();
    show();
    look(*console);
    inDeviceDialog(look);
    inImportDialog(look);
}

} // namespace norvane
