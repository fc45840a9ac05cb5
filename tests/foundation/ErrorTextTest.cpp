#include "foundation/ErrorText.h"

#include "common/NumberedFailure.h"
#include "foundation/Globals.h"
#include "support/LoadedLanguage.h"

#include <QMap>

#include <gtest/gtest.h>

#include <limits>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// Texts that no other row of the language file could be taken for.
QHash<qint32, QString> languageTexts()
{
    return {{3760032, u"<3760032>"_s}, {3760033, u"<3760033>"_s}, {3760034, u"<3760034>"_s}};
}

QMap<qint32, QLatin1String> wordsByCode()
{
    const std::pair<qint32, const char *> words[] = {
        {1, "Ok"},
        {0, ""},
        {-1, "ERR_FAIL"},
        {-2, "<3760032>"},
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
        {-35, "<3760033>"},
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
        {-100, "<3760034>"},
    };
    QMap<qint32, QLatin1String> byCode;
    for (const auto &[code, word] : words)
        byCode.insert(code, QLatin1String(word));
    return byCode;
}

TEST(ErrorTextTest, everyCodeHasItsWordAndAllOthersNone)
{
    const LoadedLanguage language(languageTexts());
    const auto words = wordsByCode();
    ASSERT_EQ(words.size(), 64);
    for (qint32 code = -1000; code <= 1000; ++code)
        EXPECT_EQ(GetErrorText(code), words.value(code)) << code;
}

TEST(ErrorTextTest, codesOfOtherTablesAndTheLimitsOfTheTypeHaveNoWord)
{
    const LoadedLanguage language(languageTexts());
    for (const qint32 code :
         {-63, -98, -49, -50, 2, -101, 65535, -65537, std::numeric_limits<qint32>::max(),
          std::numeric_limits<qint32>::min()})
        EXPECT_EQ(GetErrorText(code), QString()) << code;
}

TEST(ErrorTextTest, threeWordsComeFromTheLanguageFile)
{
    for (const QString &code : {u"ESN"_s, u"CAT"_s, u"PTG"_s}) {
        const LoadedLanguage language(code);
        EXPECT_EQ(GetErrorText(-2), GS(3760032));
        EXPECT_EQ(GetErrorText(-35), GS(3760033));
        EXPECT_EQ(GetErrorText(-100), GS(3760034));
        EXPECT_FALSE(GetErrorText(-2).contains(u'?'));
    }
    const LoadedLanguage spanish(u"ESN"_s);
    EXPECT_EQ(GetErrorText(-2), u"No se encuentra el dispositivo o no se puede abrir su puerto."_s);
}

TEST(ErrorTextTest, onlyTheThreeTextsNeedALanguageFile)
{
    ASSERT_FALSE(goLocalize);
    EXPECT_EQ(GetErrorText(-1), u"ERR_FAIL"_s);
    EXPECT_EQ(GetErrorText(0), QString());
    EXPECT_THROW(GetErrorText(-2), NumberedFailure);
}

} // namespace

} // namespace norvane
