#include "NorvaneSMS/console/BulkTemplate.h"

#include "foundation/clsCollection.h"

#include <QList>

#include <gtest/gtest.h>

#include <tuple>

namespace norvane {

using namespace Qt::StringLiterals;

TEST(FillTemplate, fieldsTakeThePlacesOfTheirNumbers)
{
    const QList<std::tuple<const char *, const char *, const char *>> cases{
        {"Ola %1, o seu saldo e %2", "912345678|Ana|10", "Ola Ana, o seu saldo e 10"},
        {"%0 %0", "1", "1 1"},
        {"%1 %5", "1", "%1 %5"},
        {"100%5", "0|1|2|3|4|cinco", "100cinco"},
        {"%10", "0|a|2|3|4|5|6|7|8|9|z", "a0"},
        {"%1", "0|%2|b", "b"},
        {"%2", "0|a|%1", "%1"},
        {"", "1|2", ""},
        {"<%1>", "1||2", "<>"},
        {"%01", "7|x", "71"},
    };
    for (const auto &[text, row, filled] : cases)
        EXPECT_EQ(FillTemplate(QString::fromUtf8(text), QString::fromUtf8(row).split(u'|')),
                  QString::fromUtf8(filled))
            << text;
}

TEST(BulkList, recipientsWithoutAPhoneGetNoMessageAndFieldsAreNotNormalised)
{
    clsCollection recipients;
    for (const char *const row : {"912 345 678|José", "|Ana", "913456789|Rui"})
        recipients.add(QString::fromUtf8(row), QString::fromUtf8(row));
    const SMSList list = BulkList(u"Olá %1"_s, recipients);
    EXPECT_EQ(list.entries(), (QList<SMSList::Entry>{{u"912345678"_s, u"Ola José"_s},
                                                     {u"913456789"_s, u"Ola Rui"_s}}));
}

} // namespace norvane
