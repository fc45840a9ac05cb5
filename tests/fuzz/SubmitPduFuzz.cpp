#include "TovekSMService/modem/codec/SubmitPdu.h"
#include "gsm-simulator/PduDecoder.h"

#include "TovekSMService/modem/codec/SubmitDecoder.h"
#include "fuzz/FuzzTarget.h"

#include <algorithm>

namespace norvane {

using namespace Qt::StringLiterals;

// Any phone and any text: an error that fits, or parts that two decoders, which share nothing with
// the encoder, put together again.

namespace {

/// Half a pair can't travel; it arrives as U+FFFD.
QString arriving(const QString &text)
{
    const QList<uint> codePoints = text.toUcs4();
    return QString::fromUcs4(reinterpret_cast<const char32_t *>(codePoints.constData()),
                             codePoints.size());
}

void checkError(EncodeError error, const EncodeRequest &request)
{
    const QString digits = request.phone.mid(request.phone.startsWith(u'+') ? 1 : 0);
    const bool valid = std::all_of(digits.begin(), digits.end(),
                                   [](QChar c) { return u"0123456789*#abc"_s.contains(c); });
    switch (error) {
    case EncodeError::EmptyPhone:
        expectThat(digits.isEmpty(), "a phone is empty");
        break;
    case EncodeError::InvalidCharacters:
        expectThat(!valid, "a phone has invalid characters");
        break;
    case EncodeError::NumberTooLong:
        expectThat(valid && digits.size() > 20, "a phone is too long");
        break;
    case EncodeError::TextTooLong:
        expectThat(request.text.size() > 255 * 33, "a text is too long");
        break;
    }
    expectThat(errorCode(error) < 0, "an error has a code");
}

QString decodedPart(const SubmitPart &part, const EncodeRequest &request)
{
    const std::optional<DecodedSubmit> decoded = decodeSubmit(part.hex);
    expectThat(decoded.has_value(), "a part is well formed");
    expectThat(decoded->phone == request.phone, "the phone arrives");
    expectThat(decoded->tpduLength == part.length, "the length is told rightly");
    expectThat(decoded->number == part.number && decoded->total == part.total,
               "the place of the part arrives");
    expectThat(decoded->concatenationReference.has_value() == (part.total > 1),
               "parts are tied together, and a single one isn't");
    expectThat(decoded->concatenationReference.value_or(request.reference) == request.reference,
               "the reference arrives");
    const std::optional<int> validity = request.validityPeriod;
    expectThat(decoded->validityPeriod == validity, "the validity arrives");

    const auto simulated = simulator::decodeSubmission(part.hex, part.length);
    const auto *submitted = std::get_if<simulator::SubmittedPart>(&simulated);
    expectThat(submitted != nullptr, "the simulated device takes the part");
    expectThat(submitted->text == decoded->text, "both decoders read the same text");
    expectThat(submitted->number == decoded->phone, "both decoders read the same number");
    return decoded->text;
}

} // namespace

int LLVMFuzzerTestOneInput(const quint8 *data, std::size_t size)
{
    FuzzInput input(data, size);
    EncodeRequest request;
    request.reference = static_cast<quint16>(input.takeNumber(65536));
    if (const quint8 validity = input.takeByte(); validity > 0)
        request.validityPeriod = validity;
    request.phone = input.takeByte() % 2 == 0 ? u"+34600"_s : input.takeText(64);
    request.text = input.takeText(50'000);

    const auto result = encodeSubmit(request);
    if (!result) {
        checkError(result.error(), request);
        return 0;
    }
    const auto &parts = *result;
    expectThat(!parts.isEmpty() && parts.size() <= 255, "a message has 1 to 255 parts");
    QString together;
    for (qsizetype i = 0; i < parts.size(); ++i) {
        expectThat(parts.at(i).number == i + 1 && parts.at(i).total == parts.size(),
                   "the parts are counted from 1");
        together += decodedPart(parts.at(i), request);
    }
    expectThat(together == arriving(request.text), "the text arrives");
    return 0;
}

} // namespace norvane
