#include "TovekSMService/modem/codec/AtReader.h"

#include "fuzz/FuzzTarget.h"

#include <algorithm>
#include <vector>

namespace norvane {

// Bytes of a device in any pieces, with commands begun and ended between them.

namespace {

const QByteArray commands[] = {"AT",      "ATE0",       "AT+CPIN?", "AT+CREG?",
                               "AT+CGSN", "AT+CMGS=23", "ATD123;",  "A"};
const QByteArray payload = "0001000781214365F7000005E8329BFD06";

bool isPrintable(const QByteArray &line)
{
    return std::all_of(line.begin(), line.end(), [](char c) { return c >= 0x20 && c <= 0x7E; });
}

/// Where a reader is as its user sees it.
struct Progress
{
    bool inCommand = false;
    bool promptExpected = false;
};

std::vector<AtToken> pull(AtReader &reader, const Progress &progress)
{
    std::vector<AtToken> tokens;
    while (const std::optional<AtToken> token = reader.next()) {
        expectThat(!token->line.isEmpty(), "a token has a line");
        expectThat(token->line.size() <= AtReader::maxLine, "a line has a longest length");
        expectThat(isPrintable(token->line), "a line has printable characters only");
        const bool answer =
            token->kind != AtToken::Kind::Unsolicited && token->kind != AtToken::Kind::Prompt;
        expectThat(!answer || progress.inCommand, "an answer belongs to a command");
        expectThat(token->kind != AtToken::Kind::Prompt || progress.promptExpected,
                   "a prompt was expected");
        expectThat(token->result.number >= -1, "a result's number is none or not negative");
        tokens.push_back(*token);
    }
    expectThat(reader.unfinishedLine().size() <= AtReader::maxLine,
               "an unfinished line has a longest length");
    return tokens;
}

/// A reader among commands that come and go.
void readWhileCommandsChange(FuzzInput input)
{
    AtReader reader;
    Progress progress;
    while (!input.atEnd()) {
        switch (input.takeNumber(8)) {
        case 0:
            reader.begin(commands[input.takeNumber(std::size(commands))], {"^ICCID"});
            progress.inCommand = true;
            break;
        case 1:
            reader.end();
            progress = {};
            break;
        case 2:
            progress.promptExpected = input.takeByte() % 2 == 1;
            reader.expectPrompt(progress.promptExpected);
            break;
        case 3:
            reader.payloadSent(payload);
            break;
        case 4:
            reader.clear();
            progress = {};
            break;
        case 5:
            reader.append(input.takeBytes(16)); // looked at later
            break;
        default: {
            const QByteArray bytes = input.takeBytes(4096);
            reader.append(bytes);
            pull(reader, progress);
        }
        }
    }
    pull(reader, progress);
}

/// However the bytes are cut into pieces, they are the same lines.
void readInPieces(FuzzInput input)
{
    const QByteArray command = commands[input.takeNumber(std::size(commands))];
    const Progress progress{true, input.takeByte() % 2 == 1};
    const int pieceSize = 1 + input.takeNumber(16);
    const QByteArray bytes = input.takeRest();

    AtReader whole;
    AtReader pieces;
    for (AtReader *reader : {&whole, &pieces}) {
        reader->begin(command);
        reader->expectPrompt(progress.promptExpected);
    }
    whole.append(bytes);
    const std::vector<AtToken> expected = pull(whole, progress);
    std::vector<AtToken> found;
    for (qsizetype i = 0; i < bytes.size(); i += pieceSize) {
        pieces.append(bytes.mid(i, pieceSize));
        for (const AtToken &token : pull(pieces, progress))
            found.push_back(token);
    }
    const auto same = [](const AtToken &a, const AtToken &b) {
        return a.kind == b.kind && a.line == b.line && a.result.kind == b.result.kind &&
               a.result.number == b.result.number;
    };
    expectThat(std::equal(expected.begin(), expected.end(), found.begin(), found.end(), same),
               "the pieces in which bytes arrive make no difference");
    expectThat(whole.noise() == pieces.noise(), "noise is counted the same in pieces");
}

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    readWhileCommandsChange(FuzzInput(data, size));
    readInPieces(FuzzInput(data, size));
    return 0;
}

} // namespace norvane
