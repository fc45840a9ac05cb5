#include "property/Texts.h"

#include "TovekSMService/store/Store.h"
#include "TovekSMService/store/StoreResults.h"
#include "contract/BusTypes.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// What the bus makes of a text.
QString overTheBus(const QString &text)
{
    return QString::fromUtf8(Bus::withoutNul(text).toUtf8());
}

/// The database has no place for the two units that are no characters.
QString asStored(QString text)
{
    return text.replace(QChar(0xFFFE), QChar(0xFFFD)).replace(QChar(0xFFFF), QChar(0xFFFD));
}

TEST(StoredText, everythingThatTheBusBringsIsGivenBackAsItCame)
{
    const QTemporaryDir folder;
    Store store(folder.filePath(u"queue.sqlite"_s));
    done(store.open());
    const QString date = u"2026-11-20T09:00:00"_s;

    QList<SMSList::Entry> entries;
    for (const NamedText &piece : pieces())
        entries.append({overTheBus(piece.text), overTheBus(piece.text + piece.text)});
    QRandomGenerator random(7);
    for (int round = 0; round < 500; ++round)
        entries.append({overTheBus(randomText(random, 40)),
                        overTheBus(randomText(random, round % 20 == 0 ? 5000 : 300))});
    done(store.queue().add(entries, date));

    const QList<QueueRow> rows = given(store.queue().rows());
    ASSERT_EQ(rows.size(), entries.size());
    for (qsizetype i = 0; i < rows.size(); ++i) {
        ASSERT_EQ(rows.at(i).phone, asStored(entries.at(i).phone)) << i;
        ASSERT_EQ(rows.at(i).message, asStored(entries.at(i).message)) << i;
        ASSERT_EQ(rows.at(i).deliveryDate, date) << i;
    }
}

TEST(StoredText, aByteOrderMarkAtTheFrontChangesNothingBehindIt)
{
    const QTemporaryDir folder;
    Store store(folder.filePath(u"queue.sqlite"_s));
    done(store.open());
    QStringList texts;
    for (const QString &mark : {QString(QChar(0xFEFF)), QString(QChar(0xFFFE))})
        texts += {mark, mark + u"text"_s, mark + mark, u"text"_s + mark};
    for (const QString &text : std::as_const(texts))
        done(store.queue().add({{text, text}}, text));

    QList<QueueRow> rows = given(store.queue().rows());
    ASSERT_EQ(rows.size(), texts.size());
    for (qsizetype i = 0; i < rows.size(); ++i) {
        EXPECT_EQ(rows.at(i).phone, asStored(texts.at(i))) << i;
        EXPECT_EQ(rows.at(i).message, asStored(texts.at(i))) << i;
        EXPECT_EQ(rows.at(i).deliveryDate, asStored(texts.at(i))) << i;
        rows[i].message = texts.at(texts.size() - 1 - i);
    }
    EXPECT_TRUE(given(store.queue().update(rows, {})));
    for (qsizetype i = 0; i < rows.size(); ++i)
        EXPECT_EQ(given(store.queue().rows()).at(i).message,
                  asStored(texts.at(texts.size() - 1 - i)))
            << i;
}

TEST(StoredText, aHalfOfAPairDoesNotSwallowWhatFollows)
{
    // The bus replaces it before it reaches the store.
    EXPECT_EQ(overTheBus(u"a"_s + QChar(0xD83D) + u"b"_s), u"a?b"_s);
    EXPECT_EQ(overTheBus(QString(QChar(0xDE00)) + u"b"_s), u"?b"_s);
    EXPECT_EQ(overTheBus(u"a"_s + QChar(u'\0') + u"b"_s), u"a b"_s);
}

} // namespace

} // namespace norvane
