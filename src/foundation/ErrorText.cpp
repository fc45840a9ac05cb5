#include "foundation/ErrorText.h"

#include "foundation/Globals.h"
#include "foundation/TextId.h"

#include <QHash>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

struct Word
{
    qint32 code;
    const char *word;
};

constexpr Word words[] = {
    {1, "Ok"},
    {-1, "ERR_FAIL"},
    {-3, "ERR_PORT_PROPERTY"},
    {-4, "ERR_PORT_OPENED"},
    {-5, "ERR_PORT_CLOSED"},
    {-6, "ERR_PORT_WRITE"},
    {-7, "ERR_PORT_READ"},
    {-8, "ERR_PHONE_INIT"},
    {-9, "ERR_PHONE_BUSY"},
    {-10, "ERR_PHONE_SECURITY"},
    {-11, "ERR_METHOD_PARAM"},
    {-12, "ERR_CONTROL_PROPERTY"},
    {-13, "ERR_INVALID_INDEX"},
    {-14, "ERR_LOCATION_EMPTY"},
    {-15, "ERR_ENTRIES_NOT_SUPPORT"},
    {-16, "ERR_TEXT_TOO_LONG"},
    {-17, "ERR_NUMBER_TOO_LONG"},
    {-18, "ERR_INVALID_CHARACTERS"},
    {-19, "ERR_SMSC_NOT_FOUND"},
    {-20, "ERR_SMS_SERVICE"},
    {-21, "ERR_SMS_MEMORY_FULL"},
    {-22, "ERR_SMS_PDU_PARAMETER"},
    {-23, "ERR_ENCODE_FAIL"},
    {-24, "ERR_DECODE_FAIL"},
    {-25, "ERR_MEMORY_FULL"},
    {-26, "ERR_MEMORY_FAIL"},
    {-27, "ERR_INCORRECT_PASSWORD"},
    {-28, "ERR_SIM_COMMUNICATION"},
    {-29, "ERR_SIM_NOT_INSERTED"},
    {-30, "ERR_SIM_PIN_REQUIRED"},
    {-31, "ERR_SIM_PUK_REQUIRED"},
    {-32, "ERR_SIM_PIN2_REQUIRED"},
    {-33, "ERR_SIM_PUK2_REQUIRED"},
    {-34, "ERR_NTP_SERVER"},
    {-36, "ERR_NETWORK_RP"},
    {-37, "ERR_NETWORK_TP"},
    {-38, "ERR_NETWORK_SERVICE"},
    {-39, "ERR_NO_RESPOND"},
    {-40, "ERR_NOT_SUPPORT"},
    {-41, "ERR_UNEXPECTED_ANSWER"},
    {-42, "ERR_UNKNOWN_CODE"},
    {-43, "ERR_NO_DIALTONE"},
    {-44, "ERR_NO_CARRIER"},
    {-45, "ERR_NO_ANSWER"},
    {-46, "ERR_NO_ACTIVE_CALL"},
    {-47, "ERR_FILE_OPEN"},
    {-48, "ERR_FILE_CREATE"},
    {-51, "ERR_CALL_BARRED"},
    {-52, "ERR_CALL_PHONE_BUSY"},
    {-53, "ERR_NO_PARENT_WND"},
    {-54, "ERR_PROTOCOL_TIMEOUT"},
    {-55, "ERR_PROTOCOL_WRITE"},
    {-56, "ERR_FILE_MISSING"},
    {-57, "ERR_MAP_FILE_FAIL"},
    {-58, "ERR_CREATE_PROCESS"},
    {-59, "ERR_CREATE_MUTEX"},
    {-60, "ERR_OPEN_MUTEX"},
    {-61, "ERR_OPEN_FILEMAP"},
    {-62, "ERR_CLOSE_PROCESS"},
    {-99, "ERR_GET_LAST_ERR"},
};

QHash<qint32, QString> wordsByCode()
{
    QHash<qint32, QString> byCode;
    for (const Word &entry : words)
        byCode.insert(entry.code, QLatin1String(entry.word));
    return byCode;
}

} // namespace

QString GetErrorText(qint32 code)
{
    switch (code) {
    case -2:
        return GS(TextId::PortNotFoundError);
    case -35:
        return GS(TextId::NetworkTimeoutError);
    case -100:
        return GS(TextId::UnknownError);
    default:
        static const QHash<qint32, QString> byCode = wordsByCode();
        return byCode.value(code, ""_L1);
    }
}

} // namespace norvane
