#pragma once

#include "TovekSMService/modem/device/Modem.h"

#include <memory>

namespace norvane {

/// The modem that the connection parameter asks for: one behind a port, or one that the platform's
/// modem manager owns.
class SelectedModem : public Modem
{
    Q_OBJECT

public:
    SelectedModem(std::unique_ptr<Modem> port, std::unique_ptr<Modem> managed,
                  QObject *parent = nullptr);
    ~SelectedModem() override;

    State state() const override { return m_selected->state(); }
    const DeviceDetails &details() const override { return m_selected->details(); }
    Unit unit() const override { return m_selected->unit(); }
    void open(const DeviceParameter &parameter, const QString &pin, OpenMode mode = OpenMode::Plain,
              const QString &imei = {}) override;
    void close() override { m_selected->close(); }
    bool awaitsPinOutcome() const override { return m_selected->awaitsPinOutcome(); }
    void send(const SubmitPart &part, Followers followers = Followers::None) override
    {
        m_selected->send(part, followers);
    }
    bool asksForFollowers() const override { return m_selected->asksForFollowers(); }
    void refreshDetails() override { m_selected->refreshDetails(); }
    bool hasMail() const override { return m_selected->hasMail(); }
    void fetchMail() override { m_selected->fetchMail(); }
    void dismissMail(const QList<Arrival> &arrivals) override { m_selected->dismissMail(arrivals); }
    void deferMail(const QList<Arrival> &arrivals) override { m_selected->deferMail(arrivals); }
    void test() override { m_selected->test(); }

private:
    void forward(const Modem &modem);

    const std::unique_ptr<Modem> m_port;
    const std::unique_ptr<Modem> m_managed;
    Modem *m_selected;
};

} // namespace norvane
