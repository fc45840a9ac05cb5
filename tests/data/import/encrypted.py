# Writes encrypted.xls, encrypted.xlsx and encrypted.ods into a folder, by an office suite that waits
# at a pipe. Their password is "secreto". Needs the package python3-uno.
import sys
import time

import uno


def pair(name, value, kind="com.sun.star.beans.PropertyValue"):
    made = uno.createUnoStruct(kind)
    made.Name = name
    made.Value = value
    return made


def named(name, value):
    return pair(name, value, "com.sun.star.beans.NamedValue")


def desktop_at(address):
    local = uno.getComponentContext()
    resolver = local.ServiceManager.createInstanceWithContext(
        "com.sun.star.bridge.UnoUrlResolver", local
    )
    for attempt in range(100):
        try:
            remote = resolver.resolve(address)
            break
        except Exception:
            time.sleep(0.2)
    return remote.ServiceManager.createInstanceWithContext("com.sun.star.frame.Desktop", remote)


folder, pipe = sys.argv[1:]
desktop = desktop_at("uno:pipe,name=%s;urp;StarOffice.ComponentContext" % pipe)
book = desktop.loadComponentFromURL("private:factory/scalc", "_blank", 0, (pair("Hidden", True),))
sheet = book.Sheets.getByIndex(0)
sheet.getCellByPosition(0, 0).String = "Num"
sheet.getCellByPosition(0, 1).Value = 912345678

password = pair("Password", "secreto")
standard = (named("OOXPassword", "secreto"), named("CryptoType", "Standard"))
package = pair("EncryptionData", uno.Any("[]com.sun.star.beans.NamedValue", standard))
for ending, writer, key in (
    ("xls", "MS Excel 97", password),
    ("xlsx", "Calc MS Excel 2007 XML", package),
    ("ods", "calc8", password),
):
    address = "file://%s/encrypted.%s" % (folder, ending)
    book.storeToURL(address, (pair("FilterName", writer), key))
book.close(True)
desktop.terminate()
