#include "NorvaneSMS/console/DevicePane.h"

#include "NorvaneSMS/console/ControlsFixture.h"
#include "NorvaneSMS/console/TerminalView.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"
#include "foundation/ui/CaptionedFrame.h"

#include <QLabel>

namespace norvane {

namespace {

class DevicePaneTest : public ControlsFixture
{
protected:
    QString terminal() const { return m_controls.txtTerm->text(); }
    QString status() const { return m_controls.lblDeviceStatus->text(); }
    QString caption() const { return m_controls.fraCommunication->caption(); }

    const EventTexts::Device m_device{
        u"Norvane"_s, u"M1"_s, u"490154203237518"_s, {}, 50, 60, {}, {}, {}, {}};
    DevicePane m_pane{m_controls};
};

TEST_F(DevicePaneTest, showsTheDetailsInThePlaceOfWhatStoodThere)
{
    m_controls.txtTerm->appendLine(u"before"_s);
    m_pane.showDetails(m_device);
    EXPECT_EQ(terminal(), EventTexts::terminalText(m_device));
    EXPECT_EQ(status(), u"Norvane-M1"_s);
}

TEST_F(DevicePaneTest, showsThatTheDeviceIsBeingTested)
{
    m_pane.showDetails(m_device);
    m_pane.showTesting();
    EXPECT_EQ(terminal(), QString());
    EXPECT_EQ(caption(), GS(TextId::DeviceTestRunning));
    EXPECT_EQ(status(), u"Norvane-M1"_s) << "until the outcome is known";
}

TEST_F(DevicePaneTest, showsAnAnswerBehindTheDetailsThatCameWithIt)
{
    m_pane.showTesting();
    m_pane.showDetails(m_device);
    m_pane.showTested(true);
    EXPECT_EQ(terminal(), EventTexts::terminalText(m_device) + GS(TextId::DeviceTestPassed));
    EXPECT_EQ(status(), GS(TextId::DeviceAnswers));
    EXPECT_EQ(caption(), GS(TextId::CommunicationFrame));
}

TEST_F(DevicePaneTest, leavesTheReasonOfASilentDeviceInTheTerminal)
{
    m_pane.showTesting();
    m_controls.txtTerm->appendLine(u"reason"_s);
    m_pane.showTested(false);
    EXPECT_EQ(terminal(), u"reason\r\n"_s);
    EXPECT_EQ(status(), GS(TextId::DeviceSilent));
    EXPECT_EQ(caption(), GS(TextId::CommunicationFrame));
}

} // namespace

} // namespace norvane
