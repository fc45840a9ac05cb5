#include "NorvaneSMS/console/DevicePane.h"

#include "NorvaneSMS/console/ConsoleControls.h"
#include "NorvaneSMS/console/TerminalView.h"
#include "foundation/Globals.h"
#include "foundation/ui/CaptionedFrame.h"

#include <QLabel>

void DevicePane::showDetails(const EventTexts::Device &device)
{
    m_controls.txtTerm->setText(EventTexts::terminalText(device));
    m_controls.lblDeviceStatus->setText(
        EventTexts::deviceStatus(device.Manufacturer, device.Model));
}

void DevicePane::showTesting()
{
    m_controls.txtTerm->setText(QString());
    m_controls.fraCommunication->setCaption(GS(3760087));
    // What the operator sees for as long as the call takes: no event loop draws it.
    m_controls.fraCommunication->repaint();
    m_controls.txtTerm->viewport()->repaint();
}

void DevicePane::showTested(bool answered)
{
    if (answered)
        m_controls.txtTerm->append(GS(3760018));
    m_controls.lblDeviceStatus->setText(answered ? GS(3760019) : GS(3760088));
    m_controls.fraCommunication->setCaption(GS(3760090));
    m_controls.txtTerm->viewport()->repaint();
}
