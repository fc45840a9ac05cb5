#include "harness/DialogueWatch.h"

#include "harness/AtBytes.h"

namespace norvane {

QList<Place> DialogueWatch::read(From from, const QByteArray &bytes)
{
    QList<Place> places;
    places.reserve(bytes.size());
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (from == From::Engine && m_stage != Stage::Payload &&
            QByteArrayView(bytes).sliced(i).startsWith("AT+CMGS=")) {
            ++m_submission;
            enter(Stage::Command);
        }
        places.append(placeOf(from, bytes.at(i)));
    }
    return places;
}

Place DialogueWatch::placeOf(From from, char byte)
{
    if (from == From::Engine && byte == leavePrompt)
        enter(Stage::Outside);
    const bool engineSpeaks = m_stage == Stage::Command || m_stage == Stage::Payload;
    if (m_stage == Stage::Outside || engineSpeaks != (from == From::Engine))
        return {Stage::Outside, 0, m_submission, false, false, byte, {}, from};
    if (m_stage == Stage::Answer)
        return placeOfAnswer(byte);

    Place place{m_stage, m_offset++, m_submission, false, false, byte, {}, from};
    if (m_stage == Stage::Command) {
        place.isLast = byte == lineEnd;
        if (place.isLast)
            enter(Stage::Prompt);
    } else if (m_stage == Stage::Prompt) {
        m_line += byte;
        place.isLast = m_line.endsWith("\n> ");
        if (place.isLast)
            enter(Stage::Payload);
    } else {
        place.isLast = byte == endOfPayload;
        if (place.isLast) {
            place.payload = m_payload;
            enter(Stage::Answer);
        } else {
            m_payload += byte;
        }
    }
    return place;
}

Place DialogueWatch::placeOfAnswer(char byte)
{
    Place place{m_stage, m_offset++, m_submission, false, false, byte, {}, From::Device};
    if (byte != '\n') {
        if (byte != lineEnd)
            m_line += byte;
        return place;
    }
    place.endsReference = m_line.contains("+CMGS:");
    place.isLast = isFinalResult(m_line);
    m_line.clear();
    if (place.isLast)
        enter(Stage::Outside);
    return place;
}

void DialogueWatch::enter(Stage stage)
{
    m_stage = stage;
    m_offset = 0;
    m_line.clear();
    m_payload.clear();
}

} // namespace norvane
