#include "foundation/IniFile.h"

#include "fuzz/FuzzTarget.h"

#include <QFile>

// Any bytes as an ini file of the suite.

namespace {

constexpr int s_longestValue = 512;

const QString &fileOf(const QByteArray &bytes)
{
    static const QString path = fuzzFolder() + QStringLiteral("/fuzzed.ini");
    QFile file(path);
    expectThat(file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size(),
               "the file can be written");
    return path;
}

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    const QString section =
        input.takeByte() % 2 == 0 ? QStringLiteral("Paths") : input.takeText(20);
    const QString key = input.takeByte() % 2 == 0 ? QStringLiteral("Data") : input.takeText(20);
    const QString absent = QStringLiteral("absent");
    const QString &path = fileOf(input.takeRest());

    const QString value = ReadIniValue(section, key, absent, path);
    expectThat(value.size() <= s_longestValue, "a value has a longest length");
    expectThat(!value.contains(QChar::Null), "a value ends before a NUL");
    expectThat(!value.contains(u'\n') && !value.contains(u'\r'), "a value is on one line");
    const QString otherCase =
        ReadIniValue(QStringLiteral("PATHS"), QStringLiteral("data"), absent, path);
    expectThat(otherCase ==
                   ReadIniValue(QStringLiteral("Paths"), QStringLiteral("Data"), absent, path),
               "case doesn't count");
    return 0;
}
