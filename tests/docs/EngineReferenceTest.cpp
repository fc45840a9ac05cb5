#include "docs/Markdown.h"

#include "TovekSMService/dispatch/EngineSettings.h"
#include "TovekSMService/log/Categories.h"
#include "TovekSMService/log/EngineLog.h"

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

/// What the row of a setting says: default and bounds, as "4 | 1 to 100".
QString rowOf(const QString &document, const char *key)
{
    const QStringList rows = Markdown::captured(
        u"^\\|[^|\\n]*\\| `%1` \\| ([0-9]+ \\| [0-9]+ to [0-9]+)\\b"_s.arg(QLatin1String(key)),
        document);
    return rows.size() == 1 ? rows.first() : QString();
}

TEST(EngineReference, everySettingStandsWithItsDefaultAndItsBounds)
{
    const QString document = Markdown::textOf(u"docs/engine.md"_s);
    const EngineSettings defaults;
    ASSERT_FALSE(engineNumbers().empty());
    for (const EngineNumber &number : engineNumbers())
        EXPECT_EQ(rowOf(document, number.key),
                  u"%1 | %2 to %3"_s.arg(defaults.*number.value).arg(number.least).arg(number.max))
            << number.key;
}

TEST(EngineReference, noOtherSettingIsToldOf)
{
    QStringList known;
    for (const EngineNumber &number : engineNumbers())
        known.append(QLatin1String(number.key));
    for (const char *document : {"docs/engine.md", "docs/administration.md"}) {
        const QString text = Markdown::textOf(QLatin1String(document));
        const QStringList told =
            Markdown::captured(u"^\\|[^|\\n]*\\| `(\\w+)` \\| [0-9]"_s, text) +
            Markdown::captured(u"^(?!ServerMode|QueueFolder)([A-Z]\\w+)=[0-9]"_s, text);
        EXPECT_FALSE(told.isEmpty()) << document;
        for (const QString &key : told)
            EXPECT_TRUE(known.contains(key)) << document << ": " << qPrintable(key);
    }
}

TEST(EngineReference, everyLogCategoryIsToldOfAndNoOther)
{
    QStringList known;
    for (const QLoggingCategory *category :
         {&logAt(), &logDevice(), &logStore(), &logDispatch(), &logBus(), &logHost()})
        known.append(QLatin1String(category->categoryName()));
    QStringList told =
        Markdown::captured(u"`(engine\\.[a-z]+)`"_s, Markdown::textOf(u"docs/engine.md"_s));
    told.removeAll(u"engine.log"_s);
    told.removeDuplicates();
    EXPECT_EQ(told, known);
}

TEST(EngineReference, theSizeOfTheLogIsToldOf)
{
    const QString size = u"%1 MiB"_s.arg(EngineLog::maxFileSize / 1024 / 1024);
    const QString document = Markdown::textOf(u"docs/engine.md"_s);
    EXPECT_EQ(Markdown::captured(u"([0-9]+ MiB)"_s, document), QStringList({size, size}));
}

} // namespace

} // namespace norvane
