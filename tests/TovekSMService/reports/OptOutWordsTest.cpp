#include "TovekSMService/reports/OptOutWords.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

using Answer = OptOutWords::Answer;

Answer answerOf(const QString &text)
{
    return OptOutWords(u"BAJA,STOP,SAIR,REMOVER,PARAR"_s, u"ALTA,START"_s).answerOf(text);
}

} // namespace

TEST(OptOutWords, aWordAloneOptsOutWhateverItsCaseAndAccents)
{
    for (const QString &text : {u"BAJA"_s, u"baja"_s, u"Bája"_s, u"  stop "_s, u"Parar."_s,
                                u"stop . "_s, u"\r\nSAIR\n"_s, u"bA\u0301ja"_s})
        EXPECT_EQ(answerOf(text), Answer::OptOut) << text.toStdString();
}

TEST(OptOutWords, aWordAloneOptsInAgain)
{
    EXPECT_EQ(answerOf(u"alta"_s), Answer::OptIn);
    EXPECT_EQ(answerOf(u"Start."_s), Answer::OptIn);
}

TEST(OptOutWords, aWordAmongOthersIsNoAnswer)
{
    for (const QString &text : {u"baja por favor"_s, u"no stop"_s, u"stop!"_s, u"stop.."_s, u""_s,
                                u"."_s, u"bajar"_s, QString(5000, u' ') + u"stop"_s})
        EXPECT_EQ(answerOf(text), Answer::Other) << text.left(20).toStdString();
}

TEST(OptOutWords, theListsMayHaveBlanksAndEmptyEntries)
{
    const OptOutWords words(u" Não , ,quit"_s, QString());
    EXPECT_EQ(words.answerOf(u"nao"_s), Answer::OptOut);
    EXPECT_EQ(words.answerOf(u"QUIT"_s), Answer::OptOut);
    EXPECT_EQ(words.answerOf(u""_s), Answer::Other);
}

TEST(OptOutWords, aWordOfBothListsOptsOut)
{
    EXPECT_EQ(OptOutWords(u"stop"_s, u"stop"_s).answerOf(u"stop"_s), Answer::OptOut);
}

} // namespace norvane
