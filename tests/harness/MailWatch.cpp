#include "harness/MailWatch.h"

#include "harness/AtBytes.h"

#include <utility>

namespace norvane {

namespace {

struct Tag
{
    QByteArrayView start;
    MailLine kind;
    MailLine result = MailLine::Other; ///< the kind of what answers it
};

constexpr Tag commands[] = {{"AT+CMGR=", MailLine::Read, MailLine::ReadResult},
                            {"AT+CMGL=", MailLine::Read, MailLine::ReadResult},
                            {"AT+CMGD=", MailLine::Delete, MailLine::DeleteResult},
                            {"AT+CNMA", MailLine::Acknowledge, MailLine::AcknowledgeResult}};

constexpr Tag announcements[] = {{"+CMTI:", MailLine::Indication},
                                 {"+CDSI:", MailLine::Indication},
                                 {"+CDS:", MailLine::Report},
                                 {"+CMGR:", MailLine::Entry},
                                 {"+CMGL:", MailLine::Entry}};

/// A payload ends with Ctrl-Z or Escape, and what follows is another line.
bool endsLine(From from, char byte)
{
    return from == From::Engine ? byte == lineEnd || byte == endOfPayload || byte == leavePrompt
                                : byte == '\n';
}

bool isPair(MailLine kind)
{
    return kind == MailLine::Report || kind == MailLine::Entry;
}

} // namespace

MailPlace MailWatch::read(From from, char byte)
{
    Line &line = from == From::Engine ? m_engine : m_device;
    ++line.length;
    if (!endsLine(from, byte)) {
        if (byte != lineEnd)
            line.text += byte;
        classify(from, line);
        return place(line, false);
    }
    const bool goesOn = isPair(line.kind) && !line.hasSecond;
    const MailPlace here = place(line, !goesOn);
    if (goesOn) {
        line.text.clear();
        line.hasSecond = true;
        return here;
    }
    if (line.kind != MailLine::Other)
        ++m_numbers[line.kind];
    if (from == From::Device && isFinalResult(line.text))
        m_result = MailLine::Other;
    line = {};
    return here;
}

void MailWatch::classify(From from, Line &line)
{
    if (line.kind != MailLine::Other)
        return;
    if (from == From::Device && isFinalResult(line.text)) {
        line.kind = m_result;
        return;
    }
    const auto find = [&line](const auto &tags) -> const Tag * {
        for (const Tag &tag : tags) {
            if (line.text == tag.start)
                return &tag;
        }
        return nullptr;
    };
    const Tag *const tag = from == From::Engine ? find(commands) : find(announcements);
    if (tag == nullptr)
        return;
    line.kind = tag->kind;
    if (from == From::Engine)
        m_result = tag->result;
}

MailPlace MailWatch::place(const Line &line, bool isLast)
{
    return {line.kind, line.length - 1, m_numbers.value(line.kind), isLast};
}

} // namespace norvane
