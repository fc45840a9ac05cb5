#include "foundation/ui/FatalReport.h"

#include "common/FailureNumbers.h"
#include "support/RecordingMessageBoxes.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class FatalReportTest : public ::testing::Test
{
protected:
    FatalReportTest()
    {
        m_former = FatalReport::setTerminate([this](int code) { exitCodes.append(code); });
    }
    ~FatalReportTest() override { FatalReport::setTerminate(m_former); }

    template <typename Failure>
    QString textFor(const Failure &failure)
    {
        boxes.shown.clear();
        FatalReport::report(std::make_exception_ptr(failure));
        return boxes.shown.size() == 1 ? boxes.shown.at(0).text : QString();
    }

    RecordingMessageBoxes boxes;
    QList<int> exitCodes;

private:
    FatalReport::Terminate m_former;
};

TEST_F(FatalReportTest, criticalBoxWithDescriptionAndNumberAndThenTheEnd)
{
    FatalReport::report(
        std::make_exception_ptr(NumberedFailure(6, u"moSMSManager_SMSSent"_s, u"Overflow"_s)));
    EXPECT_EQ(boxes.shown,
              (QList<RecordingMessageBoxes::Shown>{{u"Overflow - 6"_s, MessageBoxes::Icon::Critical,
                                                    MessageBoxes::Buttons::Ok, u"Norvane SMS"_s}}));
    EXPECT_EQ(exitCodes, (QList<int>{1}));
}

TEST_F(FatalReportTest, endComesAfterTheBox)
{
    bool endedBefore = false;
    boxes.whileShown = [&] { endedBefore = !exitCodes.isEmpty(); };
    textFor(std::runtime_error("x"));
    EXPECT_FALSE(endedBefore);
    EXPECT_EQ(exitCodes.size(), 1);
}

TEST_F(FatalReportTest, foreignFailuresGetANumberOfTheLanguage)
{
    EXPECT_EQ(textFor(std::runtime_error("broken ñ")), u"broken ñ - 51"_s);
    EXPECT_EQ(textFor(std::bad_alloc()), Failure::description(7) + u" - 7"_s);
    EXPECT_EQ(textFor(42), Failure::description(51) + u" - 51"_s);
    EXPECT_EQ(exitCodes, (QList<int>{1, 1, 1}));
}

TEST_F(FatalReportTest, failureWhileTheBoxIsOpenIsDropped)
{
    boxes.whileShown = [] {
        FatalReport::report(std::make_exception_ptr(std::runtime_error("second")));
    };
    FatalReport::report(std::make_exception_ptr(std::runtime_error("first")));
    ASSERT_EQ(boxes.shown.size(), 1);
    EXPECT_EQ(boxes.shown.at(0).text, u"first - 51"_s);
    EXPECT_EQ(exitCodes, (QList<int>{1}));
}

TEST(FatalReportDeathTest, processEndsWithExitCodeOne)
{
    const RecordingMessageBoxes boxes;
    EXPECT_EXIT(FatalReport::report(std::make_exception_ptr(std::runtime_error("end"))),
                ::testing::ExitedWithCode(1), "");
}

} // namespace

} // namespace norvane
