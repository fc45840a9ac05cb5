#include "support/LoadedLanguage.h"

#include "foundation/Globals.h"

#include <QTemporaryFile>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

void load(const QString &file, const QString &code)
{
    goLocalize = std::make_unique<cls_Localize>();
    if (!goLocalize->Init(file, code))
        qFatal("%s is no language file", qPrintable(file));
}

} // namespace

LoadedLanguage::LoadedLanguage(const QHash<qint32, QString> &texts)
{
    QTemporaryFile file;
    if (!file.open())
        qFatal("no temporary file");
    file.write("<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'"
               " xmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'"
               " xmlns:rs='urn:schemas-microsoft-com:rowset' xmlns:z='#RowsetSchema'>"
               "<s:Schema id='RowsetSchema'><s:ElementType name='row' content='eltOnly'>"
               "<s:AttributeType name='ResID' rs:number='1'/>"
               "<s:AttributeType name='ResSTring' rs:number='2'/>"
               "</s:ElementType></s:Schema><rs:data>");
    for (auto text = texts.cbegin(); text != texts.cend(); ++text)
        file.write(u"<z:row ResID='%1' ResSTring='%2'/>"_s
                       .arg(QString::number(text.key()), text.value().toHtmlEscaped())
                       .toUtf8());
    file.write("</rs:data></xml>");
    file.close();
    load(file.fileName(), u"TST"_s);
}

LoadedLanguage::LoadedLanguage(const QString &code)
{
    load(QStringLiteral(NORVANE_SOURCE_DIR "/resources/language/NorvaneSMS_%1.XML").arg(code),
         code);
}

LoadedLanguage::~LoadedLanguage()
{
    goLocalize.reset();
}

} // namespace norvane
