#include "property/Arrival.h"

#include "TovekSMService/modem/codec/SubmitDecoder.h"
#include "TovekSMService/modem/codec/SubmitPdu.h"
#include "gsm-simulator/PduDecoder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace norvane {

namespace {

constexpr int maxUserData = 140;

/// The two decoders agree on the part.
void compare(const SubmitPart &part, const DecodedSubmit &decoded)
{
    const auto result = simulator::decodeSubmission(part.hex, part.length);
    const auto *simulated = std::get_if<simulator::SubmittedPart>(&result);
    ASSERT_NE(simulated, nullptr) << part.hex.toStdString();
    EXPECT_EQ(simulated->text, decoded.text);
    EXPECT_EQ(simulated->number, decoded.phone);
    EXPECT_EQ(simulated->coding,
              decoded.coding == 0 ? simulator::Coding::Gsm7 : simulator::Coding::Ucs2);
    ASSERT_EQ(simulated->concatenation.has_value(), decoded.concatenationReference.has_value());
    if (simulated->concatenation) {
        EXPECT_EQ(simulated->concatenation->reference, *decoded.concatenationReference);
        EXPECT_EQ(simulated->concatenation->part, decoded.number);
        EXPECT_EQ(simulated->concatenation->parts, decoded.total);
    }
}

std::optional<DecodedSubmit> decodedOf(const SubmitPart &part, const QString &phone,
                                       quint16 reference)
{
    const std::optional<DecodedSubmit> decoded = decodeSubmit(part.hex);
    EXPECT_TRUE(decoded.has_value()) << part.hex.toStdString();
    if (!decoded)
        return std::nullopt;
    EXPECT_EQ(decoded->phone, phone);
    EXPECT_EQ(decoded->tpduLength, part.length);
    // In front of the user data of an SMS-SUBMIT stand at most 18 octets.
    EXPECT_LE(part.length, 18 + maxUserData);
    EXPECT_EQ(decoded->concatenationReference.has_value(), part.total > 1);
    EXPECT_EQ(decoded->concatenationReference.value_or(reference), reference);
    EXPECT_EQ(decoded->total, part.total);
    compare(part, *decoded);
    return decoded;
}

} // namespace

Arrival arrivalOf(const QString &text, const QString &phone, quint16 reference)
{
    const auto result = encodeSubmit({phone, text, reference, {}});
    EXPECT_TRUE(result.has_value()) << "a text of " << text.size() << " can't be encoded";
    if (!result)
        return {};
    QList<SubmitPart> parts = *result;
    std::rotate(parts.begin(), parts.begin() + parts.size() / 3, parts.end());
    std::reverse(parts.begin(), parts.begin() + parts.size() / 2);

    Arrival arrival;
    arrival.cut.resize(parts.size());
    QList<bool> seen(parts.size(), false);
    for (const SubmitPart &part : std::as_const(parts)) {
        const std::optional<DecodedSubmit> decoded = decodedOf(part, phone, reference);
        if (!decoded || decoded->number < 1 || decoded->number > parts.size()) {
            ADD_FAILURE() << "a part without its place: " << part.hex.toStdString();
            return {};
        }
        EXPECT_FALSE(std::exchange(seen[decoded->number - 1], true)) << "a place is taken twice";
        arrival.cut[decoded->number - 1] = decoded->text;
    }
    arrival.text = QStringList(arrival.cut).join(QString());
    return arrival;
}

} // namespace norvane
