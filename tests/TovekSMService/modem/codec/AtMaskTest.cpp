#include "TovekSMService/modem/codec/AtMask.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

struct Row
{
    const char *line;
    const char *shown;
};

// "00" is the service centre of the SIM, then the header, the number 600111222 and the text.
#define PDU "0011000B914306011122F20000AA095A707BF9A3C3D36F0B"

const Row shownRows[] = {
    // Secrets, however they are written.
    {"AT+CPIN=\"1234\"", "AT+CPIN=****"},
    {"AT+CPIN=1234", "AT+CPIN=****"},
    {"AT+CPIN=1234,5678", "AT+CPIN=****"},
    {"AT+CPIN=\"12345678\",\"1234\"", "AT+CPIN=****"},
    {"at+cpin = \"1234\"", "at+cpin =****"},
    {"ATE0;+CPIN=\"1234\"", "ATE0;+CPIN=****"},
    {"AT^CPIN=\"1234\"", "AT^CPIN=****"},
    {"AT+CPIN2=\"1234\"", "AT+CPIN2=****"},
    {"AT+CPUK=\"12345678\"", "AT+CPUK=****"},
    {"AT+CLCK=\"SC\",0,\"1234\"", "AT+CLCK=****"},
    {"AT+CPWD=\"SC\",\"1234\",\"5678\"", "AT+CPWD=****"},
    // Pieces of their echoes.
    {"T+CPIN=\"12", "T+CPIN=****"},
    {"IN=\"12", "IN=****"},
    {"=\"1234\"", "=****"},
    {"\"1234\"", "****"},
    {"1234\"", "****"},
    {"34\"", "****"},
    {"12", "****"},
    {"1234,5678", "****"},
    // Messages, with a number or as a PDU.
    {"AT+CMGS=\"+34600111222\"", "AT+CMGS=****"},
    {"AT+CMGW=\"600111222\",129", "AT+CMGW=****"},
    {PDU, "****"},
    {"> " PDU, "****"},
    {"0011000b914306011122f20000aa", "****"},
    {"+CMT: \"+34600111222\",,\"26/05/01,12:00:00+08\"", "+CMT: ****"},
    {"+CMT: ,24", "+CMT: ****"},
    {"+CMT : \"+34600111222\",,\"26/05/01,12:00:00+08\"", "+CMT: ****"},
    {"+CMGR: \"REC UNREAD\",\"+34600111222\",,\"26/05/01,12:00:00+08\"", "+CMGR: ****"},
    {"+CMGL: 1,\"REC READ\",\"+34600111222\"", "+CMGL: ****"},
    {"+CDS: 6,12,\"+34600111222\",145", "+CDS: ****"},
    {"+CBM: 88", "+CBM: ****"},
    {"+CUSD: 0,\"Your balance is 3 EUR\",15", "+CUSD: ****"},
    // What is wanted of the log.
    {"AT", "AT"},
    {"AT+CPIN?", "AT+CPIN?"},
    {"AT+CPINR=\"SIM PIN\"", "AT+CPINR=\"SIM PIN\""},
    {"AT+CMGS=23", "AT+CMGS=23"},
    {"AT+CMGF=0", "AT+CMGF=0"},
    {"AT+CNMI=0,0", "AT+CNMI=0,0"},
    {"AT+CSCA?", "AT+CSCA?"},
    {"AT+CSCA=\"+34609090909\",145", "AT+CSCA=****"},
    {"+CSCA: \"+34609090909\",145", "+CSCA: \"+34609090909\",145"},
    {"OK", "OK"},
    {"0", "0"},
    {"> ", "> "},
    {"+CPIN: SIM PIN", "+CPIN: SIM PIN"},
    {"+CPINR: SIM PIN,3,3", "+CPINR: SIM PIN,3,3"},
    {"+CMGS: 42", "+CMGS: 42"},
    {"+CMTI: \"SM\",3", "+CMTI: \"SM\",3"},
    {"+CME ERROR: 16", "+CME ERROR: 16"},
    {"+CREG: 0,1", "+CREG: 0,1"},
    {"+CREG: 2,1,\"00A1\",\"0B\"", "+CREG: 2,1,\"00A1\",\"0B\""},
    {"490154203237518", "490154203237518"},
    {"89340712345678901234", "89340712345678901234"},
    {"+CCLK: \"26/05/01,12:00:00+08\"", "+CCLK: \"26/05/01,12:00:00+08\""},
    {"Revision: 12.00.123", "Revision: 12.00.123"},
    {"", ""},
};

TEST(AtMask, aLineIsShownWithoutSecretsAndMessages)
{
    for (const Row &row : shownRows)
        EXPECT_EQ(AtMask::masked(row.line).toStdString(), row.shown) << row.line;
}

const Row strictlyShownRows[] = {
    {"OK", "OK"},
    {"ERROR", "ERROR"},
    {"0", "0"},
    {"> ", "> "},
    {"+CME ERROR: 16", "+CME ERROR: 16"},
    {"+CME ERROR: incorrect password", "+CME ERROR: incorrect password"},
    {"+CME ERROR: 1234", "****"},
    {"+CMS ERROR: 500", "+CMS ERROR: 500"},
    {"+CPIN: READY", "+CPIN: READY"},
    {"+CPIN: SIM PUK2", "+CPIN: SIM PUK2"},
    {"+CPIN: 1234", "+CPIN: ****"},
    {"+CMGS: 42", "+CMGS: 42"},
    {"+CMGS: 4711", "+CMGS: ****"},
    {"+CREG: 1", "+CREG: ****"},
    {"+CMT: \"+34600111222\"", "+CMT: ****"},
    {"+34600111222: call me", "****"},
    {"+CPIN=\"1234\"", "****"},
    {"AT+CPIN=\"12", "****"},
    {"34\"", "****"},
    {"3", "****"},
    {PDU, "****"},
    {"0011", "****"},
    {"Zanahoria", "****"},
    {"OK, Zanahoria", "****"},
    {"ERROR 1234", "****"},
    {"", "****"},
};

TEST(AtMask, whereAPieceOfASecretMayComeOnlyWhatTheStandardsHaveIsShown)
{
    for (const Row &row : strictlyShownRows)
        EXPECT_EQ(AtMask::maskedStrictly(row.line).toStdString(), row.shown) << row.line;
}

TEST(AtMask, commandsThatCarryASecretAreKnown)
{
    for (const char *const command : {"AT+CPIN=\"1234\"", "at+cpin=1234", "AT+CPIN=1234,5678",
                                      "AT+CLCK=\"SC\",0,\"1234\"", "AT+CPWD=\"SC\",\"1\",\"2\""})
        EXPECT_TRUE(AtMask::carriesSecret(command)) << command;
    for (const char *const command : {"AT", "AT+CPIN?", "AT+CPINR=\"SIM PIN\"", "AT+CMGS=23"})
        EXPECT_FALSE(AtMask::carriesSecret(command)) << command;
}

TEST(AtMask, linesThatAnnounceAMessageAreKnown)
{
    for (const char *const line :
         {"+CMT: ,24", "+CMT : ,24", "+CMGR: 1,,24", "+cds: 25", "+CBM: 88"})
        EXPECT_TRUE(AtMask::announcesMessage(line)) << line;
    for (const char *const line : {"+CMTI: \"SM\",3", "+CMGS: 42", "OK", PDU})
        EXPECT_FALSE(AtMask::announcesMessage(line)) << line;
}

} // namespace

} // namespace norvane
