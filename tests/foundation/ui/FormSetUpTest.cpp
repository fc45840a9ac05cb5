#include "foundation/ui/FormSetUp.h"

#include <QScreen>
#include <QWidget>

#include <gtest/gtest.h>

namespace norvane {

namespace {

constexpr QSize Screen(1920, 1080);

TEST(CentredTest, formStandsInTheMiddleAndHalfAPixelIsCutOff)
{
    const struct
    {
        QSize form;
        QPoint place;
    } rows[] = {
        {{1009, 519}, {455, 280}},                         // 455.5 and 280.5
        {{1000, 500}, {460, 290}}, {{1920, 1080}, {0, 0}}, // exactly the screen's size
        {{1919, 1079}, {0, 0}},                            // one pixel less
        {{1918, 1078}, {1, 1}},    {{1921, 1081}, {0, 0}}, // larger than the screen
        {{4000, 100}, {0, 490}},   {{100, 4000}, {910, 0}}, {{0, 0}, {960, 540}},
    };
    for (const auto &row : rows)
        EXPECT_EQ(FormSetUp::centred(row.form, Screen), row.place)
            << row.form.width() << 'x' << row.form.height();
}

TEST(CenterFormTest, outerSizeIsCentredOnTheScreenAndKept)
{
    QWidget form;
    form.resize(301, 200);
    form.show();
    CenterForm(&form);
    const QRect screen = form.screen()->geometry();
    EXPECT_EQ(form.frameGeometry().topLeft(),
              screen.topLeft() + FormSetUp::centred(form.frameGeometry().size(), screen.size()));
    EXPECT_EQ(form.size(), QSize(301, 200));
}

TEST(CenterFormTest, formLargerThanTheScreenStandsAtItsCornerAndKeepsItsSize)
{
    QWidget form;
    const QRect screen = form.screen()->geometry();
    form.resize(screen.size() + QSize(100, 50));
    form.show();
    CenterForm(&form);
    EXPECT_EQ(form.frameGeometry().topLeft(), screen.topLeft());
    EXPECT_EQ(form.size(), screen.size() + QSize(100, 50));
}

} // namespace

} // namespace norvane
