#include "NorvaneSMS/console/DevicePane.h"

#include "NorvaneSMS/console/ConsoleControls.h"
#include "NorvaneSMS/console/TerminalView.h"
#include "foundation/Globals.h"
#include "foundation/TextId.h"
#include "foundation/ui/CaptionedFrame.h"

#include <QLabel>

namespace norvane {

void DevicePane::showDetails(const EventTexts::Device &device)
{
    m_controls.txtTerm->setText(EventTexts::terminalText(device));
    m_controls.lblDeviceStatus->setText(
        EventTexts::deviceStatus(device.Manufacturer, device.Model));
}

void DevicePane::showTesting()
{
    m_controls.txtTerm->setText(QString());
    m_controls.fraCommunication->setCaption(GS(TextId::DeviceTestRunning));
    // Drawn now, as no event loop runs during the call that follows.
    m_controls.fraCommunication->repaint();
    m_controls.txtTerm->viewport()->repaint();
}

void DevicePane::showTested(bool answered)
{
    if (answered)
        m_controls.txtTerm->append(GS(TextId::DeviceTestPassed));
    m_controls.lblDeviceStatus->setText(answered ? GS(TextId::DeviceAnswers)
                                                 : GS(TextId::DeviceSilent));
    m_controls.fraCommunication->setCaption(GS(TextId::CommunicationFrame));
    m_controls.txtTerm->viewport()->repaint();
}

} // namespace norvane
