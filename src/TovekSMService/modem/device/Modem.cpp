#include "TovekSMService/modem/device/Modem.h"

#include "contract/ErrorCodes.h"

namespace norvane {

using namespace Qt::StringLiterals;

void Modem::refusePart(const SendFailure &failure)
{
    QMetaObject::invokeMethod(
        this, [this, failure] { Q_EMIT partFailed(failure); }, Qt::QueuedConnection);
}

void Modem::refuseTest()
{
    const int code =
        state() == State::Closed ? failureRule(LineError::NotOpen).code : ErrorCode::phoneBusy;
    QMetaObject::invokeMethod(
        this, [this, code] { Q_EMIT tested(false, code, details(), u"the modem isn't ready"_s); },
        Qt::QueuedConnection);
}

} // namespace norvane
