#include "NorvaneSMS/device/DeviceConfigFixture.h"

#include "foundation/Globals.h"

#include <QApplication>
#include <QComboBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString keyOf(const char *key)
{
    return u"Norvane/SMS/"_s + QLatin1String(key);
}

} // namespace

DeviceConfigFixture::DeviceConfigFixture()
    : dialog(nullptr, keeper, ModeSettings(settings, u"/program"_s),
             {&folders, [] { return u"/documents/Norvane"_s; }})
{
    goStartUpData = std::make_unique<clsStartUpData>();
    goLocalize = std::make_unique<cls_Localize>();
    EXPECT_TRUE(goLocalize->Init(
        QStringLiteral(NORVANE_SOURCE_DIR "/resources/language/NorvaneSMS_ESN.XML"), u"ESN"_s));
    settings.onSave = [this](const QString &key, const QString &) { keeper.calls << key; };
    store("QueueFolder", folder());
}

DeviceConfigFixture::~DeviceConfigFixture()
{
    goLocalize.reset();
    goStartUpData.reset();
}

void DeviceConfigFixture::store(const char *key, const QString &value)
{
    settings.values.insert(keyOf(key), value);
}

QString DeviceConfigFixture::stored(const char *key) const
{
    return settings.values.value(keyOf(key), u"nothing"_s);
}

bool DeviceConfigFixture::show(const std::function<void(DeviceConfigForm &)> &act)
{
    bool shown = false;
    QTimer::singleShot(0, [&] {
        auto *const form = qobject_cast<DeviceConfigForm *>(QApplication::activeModalWidget());
        ASSERT_NE(form, nullptr);
        shown = true;
        QApplication::setActiveWindow(form);
        act(*form);
        EXPECT_FALSE(form->isVisible()) << "the test left the dialog open";
        form->hide();
    });
    const bool confirmed = dialog.ShowForm();
    EXPECT_TRUE(shown);
    return confirmed;
}

void DeviceConfigFixture::press(QWidget *button)
{
    QTest::mouseClick(button, Qt::LeftButton);
}

void DeviceConfigFixture::choose(QComboBox *list, int position)
{
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Home);
    for (int i = 0; i < position; ++i)
        QTest::keyClick(list, Qt::Key_Down);
}

} // namespace norvane
