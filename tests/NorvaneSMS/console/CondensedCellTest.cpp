#include "NorvaneSMS/console/CondensedCellDelegate.h"

#include <QFontMetrics>
#include <QGuiApplication>
#include <QtMath>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class CondensedCellTest : public testing::Test
{
protected:
    int width(const QFont &font) const
    {
        return qCeil(QFontMetricsF(font).horizontalAdvance(m_text));
    }

    const QString m_text = u"23/11/26 10:00:59"_s;
    const QFont m_font = QGuiApplication::font();
};

TEST_F(CondensedCellTest, textThatFitsKeepsItsLetters)
{
    EXPECT_EQ(CondensedCellDelegate::fittingFont(m_font, m_text, width(m_font)), m_font);
}

TEST_F(CondensedCellTest, textThatIsSomewhatTooWideGetsNarrowerLettersOfTheSameHeight)
{
    const int room = width(m_font) * 8 / 10;
    const QFont font = CondensedCellDelegate::fittingFont(m_font, m_text, room);
    EXPECT_LE(width(font), room);
    EXPECT_EQ(QFontMetrics(font).height(), QFontMetrics(m_font).height());
    EXPECT_GE(font.stretch(), CondensedCellDelegate::narrowest);
}

TEST_F(CondensedCellTest, lettersAreNoNarrowerThanNeeded)
{
    const int room = width(m_font) * 95 / 100;
    const QFont font = CondensedCellDelegate::fittingFont(m_font, m_text, room);
    EXPECT_LE(width(font), room);
    EXPECT_GE(font.stretch(), 90);
}

TEST_F(CondensedCellTest, textThatWouldNeedTooNarrowLettersIsLeftToBeCutOff)
{
    EXPECT_EQ(CondensedCellDelegate::fittingFont(m_font, m_text, width(m_font) / 2), m_font);
}

} // namespace

} // namespace norvane
