#include "common/NumberedFailure.h"
#include "common/SettingsText.h"
#include "foundation/StoredBoolean.h"

#include "fuzz/FuzzTarget.h"

namespace norvane {

using namespace Qt::StringLiterals;

// Any bytes as the console's settings file, and any text as a value that is stored in it.

namespace {

const QString sectionName = u"Settings"_s;
const QString keyName = u"DropFolder"_s;
const QString otherText = u"KeepAccents"_s;

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
    for (const QString &key : {keyName, otherText})
        expectThat(settings.value(sectionName, key) == again->value(sectionName, key),
                   "a value stays the same");
    try {
        toBoolean(settings.value(sectionName, otherText).value_or(QString()));
    } catch (const NumberedFailure &failure) {
        expectThat(failure.number() == 13, "a text that is no Boolean fails as such");
    }
}

void checkWriting(SettingsText settings, const QString &value)
{
    const std::optional<QString> other = settings.value(sectionName, otherText);
    settings.setValue(sectionName, keyName, value);
    expectThat(settings.value(sectionName, keyName) == value, "a value that was set is there");
    expectThat(settings.value(sectionName, otherText) == other, "another value isn't touched");
    const std::optional<SettingsText> again = SettingsText::parse(settings.bytes());
    expectThat(again.has_value(), "what was set can be read again");
    expectThat(!isWhole(value) || again->value(sectionName, keyName) == value, "a value arrives");
    expectThat(again->value(sectionName, otherText) == other, "another value arrives");
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

} // namespace norvane
