#include "NorvaneHistory/HistoryTexts.h"

#include "support/LoadedLanguage.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

class HistoryTextsTest : public ::testing::Test
{
    LoadedLanguage language{u"ESN"_s};
};

TEST_F(HistoryTextsTest, everyStateHasAWordOfItsOwn)
{
    QStringList words;
    for (const MessageState state : HistoryTexts::states)
        words << HistoryTexts::stateName(state);
    EXPECT_EQ(words, (QStringList{u"En cola"_s, u"Enviado"_s, u"Entregado"_s, u"Rechazado"_s,
                                  u"Fallido"_s, u"En duda"_s}));
    EXPECT_EQ(HistoryTexts::stateName(static_cast<MessageState>(4096)), u"Fallido"_s);
}

TEST_F(HistoryTextsTest, aMomentIsShownAsItIsReadHere)
{
    EXPECT_EQ(HistoryTexts::moment(u"2026-11-22T09:05:07"_s), u"22/11/2026 09:05:07"_s);
    EXPECT_EQ(HistoryTexts::day(u"2026-11-22"_s), u"22/11/2026"_s);
    EXPECT_EQ(HistoryTexts::moment(QString()), QString());
    EXPECT_EQ(HistoryTexts::moment(u"to\nmorrow"_s), u"to morrow"_s);
    EXPECT_EQ(HistoryTexts::day(u"2026-13-01"_s), u"2026-13-01"_s);
}

TEST_F(HistoryTextsTest, aStepNamesItsPartAndWhy)
{
    const auto name = [](HistoryStep step, qint32 part) {
        return HistoryTexts::stepName({{}, step, part, 0, {}});
    };
    EXPECT_EQ(name(HistoryStep::Queued, 0), u"Puesto en cola"_s);
    EXPECT_EQ(name(HistoryStep::Part, 2), u"Aceptado por la red (parte 2)"_s);
    EXPECT_EQ(name(static_cast<HistoryStep>(77), 0), u"La red no sabe qué pasó"_s);
    const auto detail = [](HistoryStep step, qint32 code, const QString &reference = {}) {
        return HistoryTexts::stepDetail({{}, step, 1, code, reference});
    };
    EXPECT_EQ(detail(HistoryStep::Failed, -39), u"ERR_NO_RESPOND (-39)"_s);
    EXPECT_EQ(detail(HistoryStep::Attempt, -35), u"No hay red GSM disponible (-35)"_s);
    EXPECT_EQ(detail(HistoryStep::Failed, -1234), u"-1234"_s);
    EXPECT_EQ(detail(HistoryStep::Refused, 0x46), u"Caducado antes de la entrega (0x46)"_s);
    EXPECT_EQ(detail(HistoryStep::Pending, 0x22), u"El teléfono no responde (0x22)"_s);
    EXPECT_EQ(detail(HistoryStep::Refused, 0x5F), u"0x5F"_s);
    EXPECT_EQ(detail(HistoryStep::Refused, -1), u"Motivo desconocido"_s);
    EXPECT_EQ(detail(HistoryStep::Sent, 1, u"77"_s), u"Referencia de la red: 77"_s);
    EXPECT_EQ(detail(HistoryStep::Sent, 1), QString());
}

TEST_F(HistoryTextsTest, whatMayHaveBeenSentIsNotCalledUnsent)
{
    EXPECT_EQ(HistoryTexts::stepName({{}, HistoryStep::Failed, 0, -39, {}}), u"En duda"_s);
    EXPECT_EQ(HistoryTexts::stepName({{}, HistoryStep::Failed, 0, -38, {}}), u"No enviado"_s);
}

TEST_F(HistoryTextsTest, theReasonOfARefusalIsTheNetworksAndThatOfAFailureOurs)
{
    EXPECT_EQ(HistoryTexts::reason({MessageState::Refused, 0x43, 1}),
              u"Número inexistente o sin servicio (0x43)"_s);
    EXPECT_EQ(HistoryTexts::reason({MessageState::Failed, -22, 1}),
              u"ERR_SMS_PDU_PARAMETER (-22)"_s);
    EXPECT_EQ(HistoryTexts::reason({MessageState::InDoubt, -39, 1}), u"ERR_NO_RESPOND (-39)"_s);
}

TEST_F(HistoryTextsTest, aClassOfDelaysIsNamedByItsEnd)
{
    const QList<DeliveryDelay> delays = {{10, 1}, {60, 1}, {900, 1}, {86'400, 1}, {0, 1}};
    QStringList names;
    for (qsizetype at = 0; at < delays.size(); ++at)
        names << HistoryTexts::delay(delays, at);
    EXPECT_EQ(names, (QStringList{u"hasta 10 s"_s, u"hasta 1 min"_s, u"hasta 15 min"_s,
                                  u"hasta 24 h"_s, u"más de 24 h"_s}));
    EXPECT_EQ(HistoryTexts::delay({{0, 1}}, 0), u"más de 0 s"_s);
}

TEST_F(HistoryTextsTest, whatBreaksALineIsABlankAndNothingIsEndless)
{
    EXPECT_EQ(HistoryTexts::oneLine(u"a\r\nb\tc\u2028d\u2029e\u0085f"_s), u"a  b c d e f"_s);
    EXPECT_EQ(HistoryTexts::oneLine(QString(5000, u'x')).size(), 400);
}

} // namespace

} // namespace norvane
