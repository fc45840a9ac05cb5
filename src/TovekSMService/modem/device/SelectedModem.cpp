#include "TovekSMService/modem/device/SelectedModem.h"

#include <utility>

namespace norvane {

SelectedModem::SelectedModem(std::unique_ptr<Modem> port, std::unique_ptr<Modem> managed,
                             QObject *parent)
    : Modem(parent), m_port(std::move(port)), m_managed(std::move(managed)),
      m_selected(m_port.get())
{
    forward(*m_port);
    forward(*m_managed);
}

SelectedModem::~SelectedModem() = default;

void SelectedModem::forward(const Modem &modem)
{
    connect(&modem, &Modem::ready, this, &Modem::ready);
    connect(&modem, &Modem::detailsChanged, this, &Modem::detailsChanged);
    connect(&modem, &Modem::partAccepted, this, &Modem::partAccepted);
    connect(&modem, &Modem::partFailed, this, &Modem::partFailed);
    connect(&modem, &Modem::failed, this, &Modem::failed);
    connect(&modem, &Modem::tested, this, &Modem::tested);
    connect(&modem, &Modem::unsolicited, this, &Modem::unsolicited);
    connect(&modem, &Modem::mailDue, this, &Modem::mailDue);
    connect(&modem, &Modem::mailRead, this, &Modem::mailRead);
    connect(&modem, &Modem::pinResolved, this, &Modem::pinResolved);
    connect(&modem, &Modem::functionalityReset, this, &Modem::functionalityReset);
}

void SelectedModem::open(const DeviceParameter &parameter, const QString &pin, OpenMode mode,
                         const QString &imei)
{
    Modem *const wanted =
        std::holds_alternative<ManagerParameter>(parameter) ? m_managed.get() : m_port.get();
    if (wanted != m_selected)
        m_selected->close();
    m_selected = wanted;
    m_selected->open(parameter, pin, mode, imei);
}

} // namespace norvane
