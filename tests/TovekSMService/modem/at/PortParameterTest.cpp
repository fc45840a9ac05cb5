#include "TovekSMService/modem/at/PortParameter.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

TEST(PortParameter, readsDeviceAndSpeed)
{
    const struct
    {
        const char *text;
        const char *device;
        int baud;
    } rows[] = {
        {"COM1, 9600", "/dev/ttyS0", 9600},
        {"COM3, 9600", "/dev/ttyS2", 9600},
        {"com3,115200", "/dev/ttyS2", 115200},
        {"  Com12 ,  19200  ", "/dev/ttyS11", 19200},
        {"COM03, 9600", "/dev/ttyS2", 9600},
        {"COM1", "/dev/ttyS0", 9600},
        {"/dev/ttyUSB0, 115200", "/dev/ttyUSB0", 115200},
        {"/dev/ttyUSB0", "/dev/ttyUSB0", 9600},
        {"/dev/my modem, the second,460800", "/dev/my modem, the second", 460800},
        {"sub/modem, 9600", "sub/modem", 9600},
        {"/dev/x, 2147483647", "/dev/x", 2147483647},
        {"/dev/x, 1", "/dev/x", 1},
    };
    for (const auto &row : rows) {
        const auto parameter = parsePortParameter(QString::fromUtf8(row.text));
        ASSERT_TRUE(parameter.has_value()) << row.text;
        EXPECT_EQ(parameter->device, QString::fromUtf8(row.device)) << row.text;
        EXPECT_EQ(parameter->baud, row.baud) << row.text;
    }
}

TEST(PortParameter, givesNothingForAnythingElse)
{
    for (const char *text : {"",
                             ",",
                             " , ",
                             "COM",
                             "COM0, 9600",
                             "COM-1, 9600",
                             "COMX, 9600",
                             "COM1 9600",
                             "LPT1, 9600",
                             "ttyUSB0, 9600",
                             "COM1,",
                             "COM1, 0",
                             "COM1, -9600",
                             "COM1, +9600",
                             "COM1, 9600x",
                             "COM1, 96 00",
                             "COM1, 9600.0",
                             "COM1, 2147483648",
                             "COM1, 99999999999999999999",
                             "COM1, 9600, 8",
                             "COM123456, 9600",
                             "/dev/ttyUSB0,",
                             "/dev/ttyUSB0, fast",
                             "COM\xD9\xA1, 9600",
                             ", 9600"})
        EXPECT_FALSE(parsePortParameter(QString::fromUtf8(text)).has_value()) << text;
    EXPECT_FALSE(parsePortParameter(u"/dev/x"_s + QChar(u'\0')).has_value());
}

} // namespace

} // namespace norvane
