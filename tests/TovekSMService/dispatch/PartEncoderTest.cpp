#include "TovekSMService/dispatch/PartEncoder.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class PartEncoderTest : public testing::Test
{
protected:
    static StoredMessage message(const QString &text, std::optional<quint16> reference = {},
                                 const QString &phone = u"600"_s)
    {
        StoredMessage message;
        message.phone = phone;
        message.text = text;
        message.reference = reference;
        return message;
    }

    QList<QByteArray> hex(const StoredMessage &message)
    {
        QList<QByteArray> hex;
        const auto result = m_encoder.parts(message);
        for (const SubmitPart &part : result.value())
            hex.append(part.hex);
        return hex;
    }

    /// What encoding the message anew gives.
    static QList<QByteArray> fresh(const StoredMessage &message, std::optional<quint8> validity)
    {
        QList<QByteArray> hex;
        const auto result =
            encodeSubmit({message.phone, message.text, message.reference.value_or(0), validity});
        for (const SubmitPart &part : result.value())
            hex.append(part.hex);
        return hex;
    }

    int m_encoded = 0;
    PartEncoder m_encoder{167, [this](const EncodeRequest &request) {
                              ++m_encoded;
                              return encodeSubmit(request);
                          }};
};

TEST_F(PartEncoderTest, aMessageIsEncodedOnceWhateverReferenceItGets)
{
    const QString text(400, u'x');
    for (const std::optional<quint16> reference :
         {std::optional<quint16>(), std::optional<quint16>(1), std::optional<quint16>(0xABCD)})
        EXPECT_EQ(hex(message(text, reference)), fresh(message(text, reference), 167));
    EXPECT_EQ(m_encoded, 1);
}

TEST_F(PartEncoderTest, theReferenceStandsInItsPlaceWhateverThePhoneAndTheAlphabet)
{
    for (const QString &phone : {u"+1"_s, u"600"_s, u"+12345678901234567890"_s}) {
        for (const QChar letter : {u'a', u'ж'}) {
            const StoredMessage each = message(QString(500, letter), 0x1234, phone);
            EXPECT_EQ(hex(each), fresh(each, 167));
        }
    }
}

TEST_F(PartEncoderTest, anotherPhoneOrTextIsEncodedAnew)
{
    EXPECT_EQ(hex(message(u"a"_s)), fresh(message(u"a"_s), 167));
    EXPECT_EQ(hex(message(u"b"_s)), fresh(message(u"b"_s), 167));
    const StoredMessage other = message(u"b"_s, {}, u"601"_s);
    EXPECT_EQ(hex(other), fresh(other, 167));
    EXPECT_EQ(m_encoded, 3);
}

TEST_F(PartEncoderTest, whatCannotBeEncodedIsToldAndNotKept)
{
    const auto refused = m_encoder.parts(message(u"a"_s, {}, u"x"_s));
    ASSERT_FALSE(refused.has_value());
    EXPECT_EQ(refused.error(), EncodeError::InvalidCharacters);
    EXPECT_EQ(hex(message(u"a"_s)), fresh(message(u"a"_s), 167));
}

} // namespace

} // namespace norvane
