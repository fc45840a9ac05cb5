#include "foundation/IniFile.h"

#include "fuzz/FuzzTarget.h"

#include <QFile>

namespace norvane {

using namespace Qt::StringLiterals;

// Any bytes as an ini file of the suite.

namespace {

constexpr int maxValue = 512;

const QString &fileOf(const QByteArray &bytes)
{
    static const QString path = fuzzFolder() + u"/fuzzed.ini"_s;
    QFile file(path);
    expectThat(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(),
               "the file can be written");
    return path;
}

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    const QString section = input.takeByte() % 2 == 0 ? u"Paths"_s : input.takeText(20);
    const QString key = input.takeByte() % 2 == 0 ? u"Data"_s : input.takeText(20);
    const QString absent = u"absent"_s;
    const QString &path = fileOf(input.takeRest());

    const QString value = ReadIniValue(section, key, absent, path);
    expectThat(value.size() <= maxValue, "a value has a longest length");
    expectThat(!value.contains(QChar::Null), "a value ends before a NUL");
    expectThat(!value.contains(u'\n') && !value.contains(u'\r'), "a value is on one line");
    const QString otherCase = ReadIniValue(u"PATHS"_s, u"data"_s, absent, path);
    expectThat(otherCase == ReadIniValue(u"Paths"_s, u"Data"_s, absent, path),
               "case doesn't count");
    return 0;
}

} // namespace norvane
