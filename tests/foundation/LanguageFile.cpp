#include "foundation/LanguageFile.h"

namespace norvane {

namespace LanguageFile {

const QByteArray declaration = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";

const QByteArray open = "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'\n"
                        "     xmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'\n"
                        "     xmlns:rs='urn:schemas-microsoft-com:rowset'\n"
                        "     xmlns:z='#RowsetSchema'>\n";

const QByteArray schema =
    "<s:Schema id='RowsetSchema'>\n"
    " <s:ElementType name='row' content='eltOnly'>\n"
    "  <s:AttributeType name='ResID' rs:number='1'>\n"
    "   <s:datatype dt:type='int' dt:maxLength='4' rs:precision='10' rs:fixedlength='true'/>\n"
    "  </s:AttributeType>\n"
    "  <s:AttributeType name='ResSTring' rs:number='2' rs:nullable='true'>\n"
    "   <s:datatype dt:type='string' dt:maxLength='255'/>\n"
    "  </s:AttributeType>\n"
    "  <s:extends type='rs:rowbase'/>\n"
    " </s:ElementType>\n"
    "</s:Schema>\n";

const QByteArray close = "</xml>\n";

QByteArray row(const QByteArray &id, const QByteArray &text)
{
    return " <z:row ResID='" + id + "' ResSTring='" + text + "'/>\n";
}

QByteArray with(const QByteArray &rows)
{
    return declaration + open + schema + "<rs:data>\n" + rows + "</rs:data>\n" + close;
}

} // namespace LanguageFile

} // namespace norvane
