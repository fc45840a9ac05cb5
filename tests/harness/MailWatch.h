#pragma once

#include "harness/DialogueWatch.h"

#include <QByteArray>
#include <QMap>

namespace norvane {

/// Kinds of lines that hand over what the network says later.
enum class MailLine {
    Other,
    Indication,        ///< +CMTI or +CDSI
    Report,            ///< +CDS and the line of its PDU
    Entry,             ///< of a memory, +CMGR or +CMGL, and the line of its PDU
    Read,              ///< AT+CMGR or AT+CMGL
    ReadResult,        ///< the final result of it
    Delete,            ///< AT+CMGD
    DeleteResult,      ///< the final result of it
    Acknowledge,       ///< AT+CNMA
    AcknowledgeResult, ///< the final result of it
};

/// Where a byte stands in such a line.
struct MailPlace
{
    MailLine line = MailLine::Other;
    int offset = 0;      ///< in its line
    int number = 0;      ///< of the line among those of its kind, counted from 0
    bool isLast = false; ///< of its line
};

/// Follows what an engine and a device say about received messages and status reports.
class MailWatch
{
public:
    /// @return the place, of no kind until the line can be told from others
    MailPlace read(From from, char byte);

private:
    /// A line as far as it has come.
    struct Line
    {
        QByteArray text;
        MailLine kind = MailLine::Other;
        int length = 0;
        bool hasSecond = false; ///< this is the second line of a pair
    };

    void classify(From from, Line &line);
    MailPlace place(const Line &line, bool isLast);

    Line m_engine;
    Line m_device;
    MailLine m_result = MailLine::Other; ///< of the command in progress
    QMap<MailLine, int> m_numbers;
};

} // namespace norvane
