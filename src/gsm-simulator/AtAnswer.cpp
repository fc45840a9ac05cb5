#include "gsm-simulator/AtAnswer.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

namespace simulator {

AtAnswer ok()
{
    return {};
}

AtAnswer ok(const QByteArray &line)
{
    return {{line}, Final::Ok, 0};
}

AtAnswer error()
{
    return {{}, Final::Error, 0};
}

AtAnswer equipmentError(int code)
{
    return {{}, Final::EquipmentError, code};
}

AtAnswer messageError(int code)
{
    return {{}, Final::MessageError, code};
}

QByteArray equipmentErrorText(int code)
{
    switch (code) {
    case EquipmentFailure::notAllowed:
        return "operation not allowed"_ba;
    case EquipmentFailure::notSupported:
        return "operation not supported"_ba;
    case EquipmentFailure::pinRequired:
        return "SIM PIN required"_ba;
    case EquipmentFailure::pukRequired:
        return "SIM PUK required"_ba;
    case EquipmentFailure::simFailure:
        return "SIM failure"_ba;
    case EquipmentFailure::wrongPassword:
        return "incorrect password"_ba;
    case EquipmentFailure::badParameters:
        return "Incorrect parameters"_ba;
    default:
        return "unknown"_ba;
    }
}

AtAnswer choice(const AtCommand &command, int &value, std::initializer_list<int> allowed,
                const AtAnswer &badValue)
{
    const QByteArray prefix = command.name + ": ";
    if (command.form == Form::Read)
        return ok(prefix + QByteArray::number(value));
    if (command.form == Form::Test) {
        QByteArrayList values;
        for (const int each : allowed)
            values += QByteArray::number(each);
        return ok(prefix + '(' + values.join(',') + ')');
    }
    const auto numbers = numbersOf(command.arguments);
    if (command.form != Form::Set || !numbers || numbers->size() != 1)
        return badValue;
    if (std::find(allowed.begin(), allowed.end(), numbers->front()) == allowed.end())
        return badValue;
    value = numbers->front();
    return ok();
}

} // namespace simulator

} // namespace norvane
