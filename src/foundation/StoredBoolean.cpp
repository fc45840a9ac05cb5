#include "foundation/StoredBoolean.h"

#include "common/FailureNumbers.h"

#include <cmath>

namespace norvane {

using namespace Qt::StringLiterals;

bool toBoolean(const QString &text)
{
    const QString word = text.trimmed();
    if (word.compare(u"True", Qt::CaseInsensitive) == 0)
        return true;
    if (word.compare(u"False", Qt::CaseInsensitive) == 0)
        return false;

    bool isNumber = false;
    const double number = word.toDouble(&isNumber);
    if (!isNumber || !std::isfinite(number))
        Failure::raise(Failure::TypeMismatch, u"toBoolean"_s);
    return std::fpclassify(number) != FP_ZERO;
}

QString booleanText(bool value)
{
    return value ? u"True"_s : u"False"_s;
}

} // namespace norvane
