#include "common/NumberedFailure.h"
#include "foundation/RowsetReader.h"
#include "foundation/cls_Localize.h"

#include "fuzz/FuzzTarget.h"

#include <QFile>

namespace norvane {

using namespace Qt::StringLiterals;

// Any bytes as a language file: its texts, or a refusal.

namespace {

QString fileOf(const QByteArray &bytes)
{
    static const QString path = fuzzFolder() + u"/fuzzed.xml"_s;
    QFile file(path);
    expectThat(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(),
               "the file can be written");
    return path;
}

bool givesTexts(const cls_Localize &texts)
{
    try {
        const QString text = texts.GS(3760017, {u"%1"_s, u"{\\CrLf}"_s});
        return !text.isNull() || text.isEmpty();
    } catch (const NumberedFailure &failure) {
        expectThat(failure.number() == 3704, "texts without a file fail as such");
        return false;
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    const QByteArray bytes = input.takeRest();
    const QStringList columns{u"ResID"_s, u"ResSTring"_s};
    int rows = 0;
    const bool isTable = RowsetReader::read(bytes, columns, [&](const QStringList &row) {
        expectThat(row.size() == columns.size(), "a row has its columns");
        ++rows;
        return true;
    });
    const bool stopped =
        RowsetReader::read(bytes, columns, [](const QStringList &) { return false; });
    expectThat(!stopped || rows == 0, "a row that isn't taken ends the reading");

    cls_Localize texts;
    const bool loaded = texts.Init(fileOf(bytes), u"ESN"_s);
    expectThat(!loaded || (isTable && rows > 0), "a language file is a table with rows");
    expectThat(givesTexts(texts) == loaded, "there are texts if the file was loaded");
    return 0;
}

} // namespace norvane
