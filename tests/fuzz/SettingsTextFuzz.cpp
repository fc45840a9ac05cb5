#include "common/NumberedFailure.h"
#include "common/SettingsText.h"
#include "foundation/StoredBoolean.h"

#include "fuzz/FuzzTarget.h"

// Any bytes as the console's settings file, and any text as a value that is stored in it.

namespace {

const QString s_section = QStringLiteral("Settings");
const QString s_key = QStringLiteral("DropFolder");
const QString s_other = QStringLiteral("KeepAccents");

QString writable(const QString &text)
{
    return QString::fromUtf8(text.toUtf8());
}

/// Half a pair can't be written; a value that has one is left out.
bool isWhole(const QString &text)
{
    return writable(text) == text;
}

void checkReading(const SettingsText &settings)
{
    const std::optional<SettingsText> again = SettingsText::parse(settings.bytes());
    expectThat(again.has_value(), "what was read can be written and read again");
    for (const QString &key : {s_key, s_other})
        expectThat(settings.value(s_section, key) == again->value(s_section, key),
                   "a value stays the same");
    try {
        toBoolean(settings.value(s_section, s_other).value_or(QString()));
    } catch (const NumberedFailure &failure) {
        expectThat(failure.number() == 13, "a text that is no Boolean fails as such");
    }
}

void checkWriting(SettingsText settings, const QString &value)
{
    const std::optional<QString> other = settings.value(s_section, s_other);
    settings.setValue(s_section, s_key, value);
    expectThat(settings.value(s_section, s_key) == value, "a value that was set is there");
    expectThat(settings.value(s_section, s_other) == other, "another value isn't touched");
    const std::optional<SettingsText> again = SettingsText::parse(settings.bytes());
    expectThat(again.has_value(), "what was set can be read again");
    expectThat(!isWhole(value) || again->value(s_section, s_key) == value, "a value arrives");
    expectThat(again->value(s_section, s_other) == other, "another value arrives");
}

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    const QString value = input.takeText(600);
    checkWriting(SettingsText(), value);
    if (const std::optional<SettingsText> settings = SettingsText::parse(input.takeRest())) {
        checkReading(*settings);
        checkWriting(*settings, value);
    }
    return 0;
}
