#include "NorvaneSMS/app/AppFixture.h"

#include "NorvaneSMS/app/modSMSClient.h"
#include "foundation/Globals.h"

#include <QDir>
#include <QFile>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString fileName(const QString &code)
{
    return u"/NorvaneSMS_"_s + code + u".XML"_s;
}

} // namespace

AppFixture::AppFixture()
{
    platform.ownFolder = m_folder.filePath(u"own"_s);
    platform.commonData = m_folder.filePath(u"data"_s);
    platform.programFiles = u"/opt"_s;
    QDir().mkpath(platform.ownFolder);
    QDir().mkpath(platform.commonData);
    platform.items = {{LocaleItem::Language, u"Spanish"_s},
                      {LocaleItem::AbbreviatedLanguage, u"esn"_s},
                      {LocaleItem::AbbreviatedCountry, u"esp"_s},
                      {LocaleItem::NativeCountry, u"España"_s},
                      {LocaleItem::Decimal, u","_s},
                      {LocaleItem::Thousand, u"."_s},
                      {LocaleItem::ShortDate, u"d/M/yy"_s},
                      {LocaleItem::LongDate, u"dddd, d 'de' MMMM 'de' yyyy"_s}};
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

} // namespace norvane
