#include "NorvaneHistory/HistoryLanguage.h"

#include "foundation/Globals.h"
#include "foundation/PlatformHelpers.h"
#include "foundation/TextId.h"
#include "foundation/platform/LinuxPlatform.h"
#include "support/RecordingMessageBoxes.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// A platform with another program folder.
class PlacedPlatform : public LinuxPlatform
{
public:
    PlacedPlatform(const QLocale &locale, QString folder)
        : LinuxPlatform(locale), m_folder(std::move(folder))
    {}
    QString programFolder() const override { return m_folder; }

private:
    QString m_folder;
};

class HistoryLanguageTest : public ::testing::Test
{
protected:
    ~HistoryLanguageTest() override { goLocalize.reset(); }
    RecordingMessageBoxes boxes;
};

TEST_F(HistoryLanguageTest, followsTheLocaleAndIsSpanishWhereThereIsNoFileForIt)
{
    const struct
    {
        const char *locale;
        const char *language;
        const char *title;
    } cases[] = {
        {"es_ES", "ESN", "Norvane SMS - Historial"}, {"es_MX", "ESN", "Norvane SMS - Historial"},
        {"ca_ES", "CAT", "Norvane SMS - Historial"}, {"pt_PT", "PTG", "Norvane SMS - Histórico"},
        {"pt_BR", "PTG", "Norvane SMS - Histórico"}, {"de_DE", "ESN", "Norvane SMS - Historial"},
        {"C", "ESN", "Norvane SMS - Historial"}};
    for (const auto &one : cases) {
        const PlacedPlatform platform(QLocale(QLatin1String(one.locale)),
                                      QStringLiteral(NORVANE_BIN_DIR));
        const PlatformHelpers helpers(platform);
        ASSERT_TRUE(HistoryLanguage::load(helpers)) << one.locale;
        EXPECT_EQ(goLocalize->LanguageID(), QLatin1String(one.language)) << one.locale;
        EXPECT_EQ(GS(TextId::HistoryTitle), QString::fromUtf8(one.title)) << one.locale;
    }
}

TEST_F(HistoryLanguageTest, aMissingFileIsToldByItsName)
{
    const QTemporaryDir folder;
    const PlacedPlatform platform(QLocale(QLocale::Catalan), folder.path());
    EXPECT_FALSE(HistoryLanguage::load(PlatformHelpers(platform)));
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_TRUE(boxes.shown.at(0).text.contains(u"NorvaneSMS_CAT.XML"_s));
}

TEST_F(HistoryLanguageTest, theToolkitSpeaksTheSameLanguage)
{
    EXPECT_EQ(HistoryLanguage::toolkitName(u"ESN"_s), u"es"_s);
    EXPECT_EQ(HistoryLanguage::toolkitName(u"CAT"_s), u"ca"_s);
    EXPECT_EQ(HistoryLanguage::toolkitName(u"PTG"_s), u"pt_BR"_s);
}

} // namespace

} // namespace norvane
