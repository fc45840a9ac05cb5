#pragma once

#include "TovekSMService/modem/at/FakeModemLine.h"

#include <QByteArray>
#include <QMap>
#include <QSet>

#include <optional>

namespace norvane {

/// The memories of a device, and what it answers about them, as 3GPP TS 27.005 has it.
class FakeMailbox
{
public:
    struct Kept
    {
        int kind = 0;
        QByteArray pdu;
        int lost = 0; ///< octets that the device counts and doesn't hand over
    };

    /// The answer to a command about messages that were received; nothing for any other.
    std::optional<QByteArray> answerTo(const QByteArray &command)
    {
        if (command == "AT+CPMS=?")
            return FakeModemLine::info(memoriesOffered);
        if (command == "AT+CNMI=?")
            return routesOffered.isEmpty() ? FakeModemLine::answer("ERROR")
                                           : FakeModemLine::info(routesOffered);
        if (command == "AT+CNMI?")
            return FakeModemLine::info(routesInForce);
        if (command.startsWith("AT+CNMI=") || command == "AT+CSMS=1" || command == "AT+CNMA")
            return FakeModemLine::answer(refused.contains(command) ? "ERROR" : "OK");
        if (command.startsWith("AT+CPMS=\"")) {
            m_selected = command.mid(9).chopped(1);
            const auto used = QByteArray::number(memories.value(m_selected).size());
            return memories.contains(m_selected)
                       ? FakeModemLine::info("+CPMS: " + used + ",20,1,20,1,20")
                       : FakeModemLine::answer("+CMS ERROR: 302");
        }
        QMap<int, Kept> &memory = memories[m_selected];
        const int index = command.mid(8).split(',').value(0).toInt();
        if (command.startsWith("AT+CMGR="))
            return memory.contains(index) ? read("+CMGR: ", memory.value(index))
                                          : FakeModemLine::answer("+CMS ERROR: 321");
        if (command.startsWith("AT+CMGD=") && command.endsWith(",1") && isDeleting)
            return deleteRead(index);
        if (command.startsWith("AT+CMGD="))
            return FakeModemLine::answer(!isDeleting                ? "+CMS ERROR: 500"
                                         : memory.remove(index) > 0 ? "OK"
                                                                    : "+CMS ERROR: 321");
        if (command == "AT+CMGL=4") {
            QByteArray listing;
            for (auto it = memory.cbegin(); it != memory.cend(); ++it)
                listing += line("+CMGL: " + QByteArray::number(it.key()) + ',', it.value());
            for (Kept &kept : memory)
                kept.kind = kept.kind == 0 ? 1 : kept.kind;
            return listing + FakeModemLine::answer("OK");
        }
        return std::nullopt;
    }

    QByteArray memoriesOffered = "+CPMS: (\"SM\",\"ME\",\"SR\"),(\"SM\",\"ME\"),(\"SM\",\"ME\")";
    QByteArray routesOffered = "+CNMI: (0-2),(0-3),(0,2),(0-2),(0,1)";
    QByteArray routesInForce = "+CNMI: 2,1,0,1,0";
    QSet<QByteArray> refused;
    QMap<QByteArray, QMap<int, Kept>> memories{{"SM", {}}, {"ME", {}}, {"SR", {}}};
    bool isDeleting = true;
    /// What becomes of +CMGD with 1 behind the place (3GPP TS 27.005, 3.5.4).
    enum class DeletesRead { Yes, OneAlone, Refused } deletesRead = DeletesRead::Yes;

private:
    QByteArray deleteRead(int index)
    {
        if (deletesRead == DeletesRead::Refused)
            return FakeModemLine::answer("+CMS ERROR: 303");
        if (deletesRead == DeletesRead::OneAlone)
            memories[m_selected].remove(index);
        else
            memories[m_selected].removeIf([](const auto &kept) { return kept->kind == 1; });
        return FakeModemLine::answer("OK");
    }

    static QByteArray line(const QByteArray &beginning, const Kept &kept)
    {
        return "\r\n" + beginning + QByteArray::number(kept.kind) + ",," +
               QByteArray::number(kept.pdu.size() / 2 - 1 - kept.pdu.left(2).toInt(nullptr, 16) +
                                  kept.lost) +
               "\r\n" + kept.pdu;
    }
    static QByteArray read(const QByteArray &beginning, const Kept &kept)
    {
        return line(beginning, kept) + "\r\n" + FakeModemLine::answer("OK");
    }

    QByteArray m_selected;
};

} // namespace norvane
