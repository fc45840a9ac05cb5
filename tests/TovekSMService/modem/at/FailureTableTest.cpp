#include "TovekSMService/modem/at/FailureTable.h"

#include <gtest/gtest.h>

namespace {

constexpr auto s_permanent = Treatment::Permanent;
constexpr auto s_temporary = Treatment::Temporary;
constexpr auto s_device = Treatment::Device;
constexpr auto s_either = Treatment::DeviceOrMessage;

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
    expectRules(FailureSpace::Cms, {{0, 0, -36, s_temporary},
                                    {1, 1, -36, s_permanent},
                                    {2, 7, -36, s_temporary},
                                    {8, 8, -51, s_permanent},
                                    {9, 9, -36, s_temporary},
                                    {10, 10, -51, s_permanent},
                                    {11, 27, -36, s_temporary},
                                    {28, 30, -36, s_permanent},
                                    {31, 49, -36, s_temporary},
                                    {50, 50, -36, s_permanent},
                                    {51, 68, -36, s_temporary},
                                    {69, 69, -36, s_permanent},
                                    {70, 94, -36, s_temporary},
                                    {95, 97, -36, s_permanent},
                                    {98, 98, -36, s_temporary},
                                    {99, 99, -36, s_permanent},
                                    {100, 127, -36, s_temporary}});
}

TEST(FailureTable, followsTheServiceCentresCauses)
{
    expectRules(FailureSpace::Cms, {{128, 130, -37, s_permanent},
                                    {131, 142, -37, s_temporary},
                                    {143, 145, -37, s_permanent},
                                    {146, 158, -37, s_temporary},
                                    {159, 161, -37, s_permanent},
                                    {162, 174, -37, s_temporary},
                                    {175, 176, -37, s_permanent},
                                    {177, 192, -37, s_temporary},
                                    {193, 193, -37, s_permanent},
                                    {194, 194, -37, s_temporary},
                                    {195, 199, -37, s_permanent},
                                    {200, 207, -37, s_temporary},
                                    {208, 208, -21, s_temporary},
                                    {209, 210, -37, s_temporary},
                                    {211, 211, -21, s_temporary},
                                    {212, 255, -37, s_temporary}});
}

TEST(FailureTable, followsTheDevicesMessageErrors)
{
    expectRules(FailureSpace::Cms, {{256, 299, -42, s_temporary},
                                    {300, 300, -1, s_either},
                                    {301, 301, -20, s_device},
                                    {302, 302, -20, s_either},
                                    {303, 303, -40, s_permanent},
                                    {304, 304, -22, s_permanent},
                                    {305, 305, -22, s_either},
                                    {306, 309, -42, s_temporary},
                                    {310, 310, -29, s_device},
                                    {311, 311, -30, s_device},
                                    {312, 312, -10, s_device},
                                    {313, 313, -28, s_device},
                                    {314, 314, -28, s_temporary},
                                    {315, 315, -28, s_device},
                                    {316, 316, -31, s_device},
                                    {317, 317, -32, s_device},
                                    {318, 318, -33, s_device},
                                    {319, 319, -42, s_temporary},
                                    {320, 320, -26, s_either},
                                    {321, 321, -13, s_permanent},
                                    {322, 322, -21, s_temporary},
                                    {323, 329, -42, s_temporary},
                                    {330, 330, -19, s_device},
                                    {331, 331, -38, s_device},
                                    {332, 332, -35, s_device},
                                    {333, 339, -42, s_temporary},
                                    {340, 340, -41, s_either},
                                    {341, 700, -42, s_temporary},
                                    {0x7FFFFFFE, 0x7FFFFFFE, -42, s_temporary}});
}

TEST(FailureTable, followsTheDevicesOtherErrors)
{
    expectRules(
        FailureSpace::Cme,
        {{0, 0, -1, s_either},        {1, 1, -8, s_device},         {2, 2, -9, s_device},
         {3, 3, -20, s_either},       {4, 4, -40, s_permanent},     {5, 7, -10, s_device},
         {8, 9, -42, s_temporary},    {10, 10, -29, s_device},      {11, 11, -30, s_device},
         {12, 12, -31, s_device},     {13, 13, -28, s_device},      {14, 14, -28, s_temporary},
         {15, 15, -28, s_device},     {16, 16, -27, s_device},      {17, 17, -32, s_device},
         {18, 18, -33, s_device},     {19, 19, -42, s_temporary},   {20, 20, -25, s_temporary},
         {21, 21, -13, s_permanent},  {22, 22, -14, s_permanent},   {23, 23, -26, s_either},
         {24, 24, -16, s_permanent},  {25, 25, -18, s_permanent},   {26, 26, -17, s_permanent},
         {27, 27, -18, s_permanent},  {28, 29, -42, s_temporary},   {30, 30, -38, s_device},
         {31, 31, -35, s_device},     {32, 32, -38, s_device},      {33, 39, -42, s_temporary},
         {40, 48, -10, s_device},     {49, 49, -42, s_temporary},   {50, 50, -11, s_permanent},
         {51, 102, -42, s_temporary}, {103, 103, -38, s_device},    {104, 105, -42, s_temporary},
         {106, 106, -38, s_device},   {107, 110, -42, s_temporary}, {111, 113, -38, s_temporary},
         {114, 999, -42, s_temporary}});
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
        EXPECT_EQ(failureRule(row.error), (FailureRule{row.code, s_device}))
            << static_cast<int>(row.error);
}

TEST(FailureTable, followsTheSending)
{
    const struct
    {
        SendProblem problem;
        FailureRule rule;
    } rows[] = {
        {SendProblem::GenericError, {-42, s_temporary}},
        {SendProblem::NoPrompt, {-39, s_device}},
        {SendProblem::LostAnswer, {-39, s_permanent}},
        {SendProblem::LineBrokenBefore, {-5, s_device}},
        {SendProblem::LineBrokenAfter, {-39, s_permanent}},
        {SendProblem::NotSent, {-5, s_device}},
        {SendProblem::CmsError, {-42, s_temporary}},
        {SendProblem::CmeError, {-42, s_temporary}},
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
    EXPECT_EQ(failureRule(result(Kind::CmsError, "nonsense")), (FailureRule{-42, s_temporary}));
    EXPECT_EQ(failureRule(result(Kind::Error, "")), (FailureRule{-42, s_temporary}));
    EXPECT_EQ(failureRule(result(Kind::NotSupported, "")), (FailureRule{-40, s_either}));
}

TEST(FailureTable, namesASourceForEachRowAndNeverACodeWithoutAName)
{
    for (const FailureRow &row : failureTable()) {
        EXPECT_GT(QByteArray(row.source).size(), 0) << row.name;
        EXPECT_LE(row.first, row.last) << row.name;
        EXPECT_LE(row.rule.code, -1);
        EXPECT_GE(row.rule.code, -62);
    }
    EXPECT_EQ(failureRule(FailureSpace::Cms, -1), (FailureRule{-42, s_temporary}));
}

} // namespace
