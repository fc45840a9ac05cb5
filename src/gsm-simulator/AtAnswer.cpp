#include "gsm-simulator/AtAnswer.h"

#include <algorithm>

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
    case EquipmentFailure::NotAllowed:
        return QByteArrayLiteral("operation not allowed");
    case EquipmentFailure::NotSupported:
        return QByteArrayLiteral("operation not supported");
    case EquipmentFailure::PinRequired:
        return QByteArrayLiteral("SIM PIN required");
    case EquipmentFailure::PukRequired:
        return QByteArrayLiteral("SIM PUK required");
    case EquipmentFailure::SimFailure:
        return QByteArrayLiteral("SIM failure");
    case EquipmentFailure::WrongPassword:
        return QByteArrayLiteral("incorrect password");
    case EquipmentFailure::BadParameters:
        return QByteArrayLiteral("Incorrect parameters");
    default:
        return QByteArrayLiteral("unknown");
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
