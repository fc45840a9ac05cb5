#include "gsm-simulator/CommandTable.h"

#include <algorithm>

namespace norvane {

namespace simulator {

namespace {

/// A command that keeps a few numbers, and answers them when it is asked.
struct Setting
{
    const char *name;
    std::vector<std::vector<int>> fields; ///< what each may be; the first is its default
    const char *readSuffix = "";          ///< what the answer has besides
};

const std::vector<Setting> &settings()
{
    static const std::vector<Setting> all{
        {"+CCWA", {{0, 1}}},       {"+CGEREP", {{0, 1, 2}, {0, 1}}},
        {"+CLIP", {{0, 1}}, ",1"}, {"+CMER", {{0, 3}, {0}, {0}, {0, 1}, {0, 1}}},
        {"+CPLS", {{0}}},          {"+CRC", {{0, 1}}},
        {"+CTZR", {{0, 1, 2}}},    {"+CTZU", {{0, 1}}},
        {"+CUSD", {{0, 1, 2}}},    {"+IFC", {{2, 0}, {2, 0}}},
    };
    return all;
}

QByteArray joined(const std::vector<int> &numbers)
{
    QByteArrayList texts;
    for (const int number : numbers)
        texts += QByteArray::number(number);
    return texts.join(',');
}

QByteArray allowedText(const Setting &setting)
{
    QByteArrayList texts;
    for (std::vector<int> field : setting.fields) {
        std::sort(field.begin(), field.end());
        texts += '(' + joined(field) + ')';
    }
    return texts.join(',');
}

bool isAllowed(const Setting &setting, const std::vector<int> &numbers)
{
    if (numbers.size() > setting.fields.size())
        return false;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const std::vector<int> &field = setting.fields.at(i);
        if (numbers.at(i) >= 0 &&
            std::find(field.begin(), field.end(), numbers.at(i)) == field.end())
            return false;
    }
    return true;
}

AtAnswer keepSetting(ModemState &modem, const AtCommand &command)
{
    const auto setting =
        std::find_if(settings().begin(), settings().end(),
                     [&command](const Setting &each) { return each.name == command.name; });
    std::vector<int> values;
    for (std::size_t i = 0; i < setting->fields.size(); ++i)
        values.push_back(settingOf(modem.profile, setting->name, i));
    if (command.form == Form::Test)
        return ok(command.name + ": " + allowedText(*setting));
    if (command.form == Form::Read)
        return ok(command.name + ": " + joined(values) + setting->readSuffix);
    const auto given = numbersOf(command.arguments);
    if (command.form != Form::Set || !given || !isAllowed(*setting, *given))
        return equipmentError(EquipmentFailure::badParameters);
    for (std::size_t i = 0; i < given->size(); ++i) {
        if (given->at(i) >= 0)
            values.at(i) = given->at(i);
    }
    modem.profile.settings[command.name] = values;
    return ok();
}

} // namespace

int settingOf(const Profile &profile, const QByteArray &name, std::size_t field)
{
    const auto kept = profile.settings.find(name);
    if (kept != profile.settings.end())
        return kept->second.at(field);
    const auto setting = std::find_if(settings().begin(), settings().end(),
                                      [&name](const Setting &each) { return each.name == name; });
    return setting->fields.at(field).front();
}

CommandEntries settingCommands()
{
    CommandEntries entries;
    for (const Setting &setting : settings())
        entries.push_back({setting.name, keepSetting});
    return entries;
}

} // namespace simulator

} // namespace norvane
