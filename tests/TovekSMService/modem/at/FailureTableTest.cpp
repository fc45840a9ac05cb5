#include "TovekSMService/modem/at/FailureTable.h"

#include <gtest/gtest.h>

namespace norvane {

namespace {

constexpr auto permanent = Treatment::Permanent;
constexpr auto temporary = Treatment::Temporary;
constexpr auto ofDevice = Treatment::Device;
constexpr auto either = Treatment::DeviceOrMessage;

struct RuleRow
{
    int first;
    int last;
    int code;
    Treatment treatment;
};

void expectRules(FailureSpace space, const QList<RuleRow> &rows)
{
    for (const RuleRow &row : rows)
        for (int number = row.first; number <= row.last; ++number) {
            const FailureRule rule = failureRule(space, number);
            EXPECT_EQ(rule.code, row.code) << number;
            EXPECT_EQ(static_cast<int>(rule.treatment), static_cast<int>(row.treatment)) << number;
        }
}

TEST(FailureTable, followsTheRelaysCauses)
{
    expectRules(FailureSpace::Cms, {{0, 0, -36, temporary},
                                    {1, 1, -36, permanent},
                                    {2, 7, -36, temporary},
                                    {8, 8, -51, permanent},
                                    {9, 9, -36, temporary},
                                    {10, 10, -51, permanent},
                                    {11, 27, -36, temporary},
                                    {28, 30, -36, permanent},
                                    {31, 49, -36, temporary},
                                    {50, 50, -36, permanent},
                                    {51, 68, -36, temporary},
                                    {69, 69, -36, permanent},
                                    {70, 94, -36, temporary},
                                    {95, 97, -36, permanent},
                                    {98, 98, -36, temporary},
                                    {99, 99, -36, permanent},
                                    {100, 127, -36, temporary}});
}

TEST(FailureTable, followsTheServiceCentresCauses)
{
    expectRules(FailureSpace::Cms, {{128, 130, -37, permanent},
                                    {131, 142, -37, temporary},
                                    {143, 145, -37, permanent},
                                    {146, 158, -37, temporary},
                                    {159, 161, -37, permanent},
                                    {162, 174, -37, temporary},
                                    {175, 176, -37, permanent},
                                    {177, 192, -37, temporary},
                                    {193, 193, -37, permanent},
                                    {194, 194, -37, temporary},
                                    {195, 199, -37, permanent},
                                    {200, 207, -37, temporary},
                                    {208, 208, -21, temporary},
                                    {209, 210, -37, temporary},
                                    {211, 211, -21, temporary},
                                    {212, 255, -37, temporary}});
}

TEST(FailureTable, followsTheDevicesMessageErrors)
{
    expectRules(FailureSpace::Cms, {{256, 299, -42, temporary},
                                    {300, 300, -1, either},
                                    {301, 301, -20, ofDevice},
                                    {302, 302, -20, either},
                                    {303, 303, -40, permanent},
                                    {304, 304, -22, permanent},
                                    {305, 305, -22, either},
                                    {306, 309, -42, temporary},
                                    {310, 310, -29, ofDevice},
                                    {311, 311, -30, ofDevice},
                                    {312, 312, -10, ofDevice},
                                    {313, 313, -28, ofDevice},
                                    {314, 314, -28, temporary},
                                    {315, 315, -28, ofDevice},
                                    {316, 316, -31, ofDevice},
                                    {317, 317, -32, ofDevice},
                                    {318, 318, -33, ofDevice},
                                    {319, 319, -42, temporary},
                                    {320, 320, -26, either},
                                    {321, 321, -13, permanent},
                                    {322, 322, -21, temporary},
                                    {323, 329, -42, temporary},
                                    {330, 330, -19, ofDevice},
                                    {331, 331, -38, ofDevice},
                                    {332, 332, -35, ofDevice},
                                    {333, 339, -42, temporary},
                                    {340, 340, -41, either},
                                    {341, 700, -42, temporary},
                                    {0x7FFFFFFE, 0x7FFFFFFE, -42, temporary}});
}

TEST(FailureTable, followsTheDevicesOtherErrors)
{
    expectRules(FailureSpace::Cme,
                {{0, 0, -1, either},        {1, 1, -8, ofDevice},       {2, 2, -9, ofDevice},
                 {3, 3, -20, either},       {4, 4, -40, permanent},     {5, 7, -10, ofDevice},
                 {8, 9, -42, temporary},    {10, 10, -29, ofDevice},    {11, 11, -30, ofDevice},
                 {12, 12, -31, ofDevice},   {13, 13, -28, ofDevice},    {14, 14, -28, temporary},
                 {15, 15, -28, ofDevice},   {16, 16, -27, ofDevice},    {17, 17, -32, ofDevice},
                 {18, 18, -33, ofDevice},   {19, 19, -42, temporary},   {20, 20, -25, temporary},
                 {21, 21, -13, permanent},  {22, 22, -14, permanent},   {23, 23, -26, either},
                 {24, 24, -16, permanent},  {25, 25, -18, permanent},   {26, 26, -17, permanent},
                 {27, 27, -18, permanent},  {28, 29, -42, temporary},   {30, 30, -38, ofDevice},
                 {31, 31, -35, ofDevice},   {32, 32, -38, ofDevice},    {33, 39, -42, temporary},
                 {40, 48, -10, ofDevice},   {49, 49, -42, temporary},   {50, 50, -11, permanent},
                 {51, 102, -42, temporary}, {103, 103, -38, ofDevice},  {104, 105, -42, temporary},
                 {106, 106, -38, ofDevice}, {107, 110, -42, temporary}, {111, 113, -38, temporary},
                 {114, 999, -42, temporary}});
}

TEST(FailureTable, followsTheLine)
{
    const struct
    {
        LineError error;
        int code;
    } rows[] = {
        {LineError::NoSuchDevice, -2},     {LineError::NotSerial, -3},
        {LineError::HeldByAnother, -4},    {LineError::NotPermitted, -5},
        {LineError::UnsupportedSpeed, -3}, {LineError::Unplugged, -5},
        {LineError::ReadFailed, -7},       {LineError::WriteFailed, -6},
        {LineError::NotOpen, -5},          {LineError::Other, -5},
    };
    for (const auto &row : rows)
        EXPECT_EQ(failureRule(row.error), (FailureRule{row.code, ofDevice}))
            << static_cast<int>(row.error);
}

TEST(FailureTable, followsTheSending)
{
    const struct
    {
        SendProblem problem;
        FailureRule rule;
    } rows[] = {
        {SendProblem::GenericError, {-42, temporary}},
        {SendProblem::NoPrompt, {-39, ofDevice}},
        {SendProblem::LostAnswer, {-39, permanent}},
        {SendProblem::LineBrokenBefore, {-5, ofDevice}},
        {SendProblem::LineBrokenAfter, {-39, permanent}},
        {SendProblem::NotSent, {-5, ofDevice}},
        {SendProblem::CmsError, {-42, temporary}},
        {SendProblem::CmeError, {-42, temporary}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(failureRule(row.problem), row.rule) << static_cast<int>(row.problem);
}

AtResult result(AtResult::Kind kind, const char *text)
{
    bool isNumber = false;
    const int number = QByteArray(text).toInt(&isNumber);
    return {kind, isNumber ? number : -1, text};
}

TEST(FailureTable, readsTheStandardsWordsWhereADeviceGivesNoNumber)
{
    using Kind = AtResult::Kind;
    EXPECT_EQ(failureNumber(result(Kind::CmeError, "SIM busy")), 14);
    EXPECT_EQ(failureNumber(result(Kind::CmeError, "incorrect PASSWORD")), 16);
    EXPECT_EQ(failureNumber(result(Kind::CmsError, "SIM busy")), 314);
    EXPECT_EQ(failureNumber(result(Kind::CmsError, "(U)SIM PIN required")), 311);
    EXPECT_EQ(failureNumber(result(Kind::CmsError, "nonsense")), -1);
    EXPECT_EQ(failureNumber(result(Kind::CmsError, "")), -1);
    EXPECT_EQ(failureNumber(result(Kind::CmsError, "38")), 38);
    EXPECT_EQ(failureNumber(result(Kind::Error, "")), -1);

    EXPECT_EQ(failureRule(result(Kind::CmsError, "network timeout")).code, -35);
    EXPECT_EQ(failureRule(result(Kind::CmsError, "nonsense")), (FailureRule{-42, temporary}));
    EXPECT_EQ(failureRule(result(Kind::Error, "")), (FailureRule{-42, temporary}));
    EXPECT_EQ(failureRule(result(Kind::NotSupported, "")), (FailureRule{-40, either}));
}

TEST(FailureTable, namesASourceForEachRowAndNeverACodeWithoutAName)
{
    for (const FailureRow &row : failureTable()) {
        EXPECT_GT(QByteArray(row.source).size(), 0) << row.name;
        EXPECT_LE(row.first, row.last) << row.name;
        EXPECT_LE(row.rule.code, -1);
        EXPECT_GE(row.rule.code, -62);
    }
    EXPECT_EQ(failureRule(FailureSpace::Cms, -1), (FailureRule{-42, temporary}));
}

} // namespace

} // namespace norvane
