#include "NorvaneSMS/app/AppFixture.h"

#include "NorvaneSMS/app/modSMSClient.h"
#include "foundation/Globals.h"

#include <QDir>
#include <QFile>

namespace {

QString fileName(const QString &code)
{
    return QStringLiteral("/NorvaneSMS_") + code + QStringLiteral(".XML");
}

} // namespace

AppFixture::AppFixture()
{
    platform.ownFolder = m_folder.filePath(QStringLiteral("own"));
    platform.commonData = m_folder.filePath(QStringLiteral("data"));
    platform.programFiles = QStringLiteral("/opt");
    QDir().mkpath(platform.ownFolder);
    QDir().mkpath(platform.commonData);
    platform.items = {{LocaleItem::Language, u"Spanish"_qs},
                      {LocaleItem::AbbreviatedLanguage, u"esn"_qs},
                      {LocaleItem::AbbreviatedCountry, u"esp"_qs},
                      {LocaleItem::NativeCountry, u"España"_qs},
                      {LocaleItem::Decimal, u","_qs},
                      {LocaleItem::Thousand, u"."_qs},
                      {LocaleItem::ShortDate, u"d/M/yy"_qs},
                      {LocaleItem::LongDate, u"dddd, d 'de' MMMM 'de' yyyy"_qs}};
}

AppFixture::~AppFixture()
{
    modSMSClient::ReleaseGlobals();
    DataFolder.clear();
    SupportContact.clear();
}

void AppFixture::installLanguage(const QString &code) const
{
    const QString name = fileName(code);
    ASSERT_TRUE(QFile::copy(QStringLiteral(NORVANE_SOURCE_DIR "/resources/language") + name,
                            platform.ownFolder + name));
}

void AppFixture::writeLanguageFile(const QString &code, const QByteArray &bytes) const
{
    QFile file(platform.ownFolder + fileName(code));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray AppFixture::fileWithoutRows()
{
    return "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'"
           " xmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'"
           " xmlns:rs='urn:schemas-microsoft-com:rowset' xmlns:z='#RowsetSchema'>"
           "<s:Schema id='RowsetSchema'><s:ElementType name='row' content='eltOnly'>"
           "<s:AttributeType name='ResID' rs:number='1'/>"
           "<s:AttributeType name='ResSTring' rs:number='2'/>"
           "</s:ElementType></s:Schema><rs:data></rs:data></xml>";
}
