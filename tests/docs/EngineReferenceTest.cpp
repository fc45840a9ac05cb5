#include "docs/Markdown.h"

#include "TovekSMService/dispatch/EngineSettings.h"

#include <gtest/gtest.h>

namespace {

/// What the row of a setting says: default and bounds, as "4 | 1 to 100".
QString rowOf(const QString &document, const char *key)
{
    const QStringList rows = Markdown::captured(
        u"^\\|[^|\\n]*\\| `%1` \\| ([0-9]+ \\| [0-9]+ to [0-9]+)\\b"_qs.arg(QLatin1String(key)),
        document);
    return rows.size() == 1 ? rows.first() : QString();
}

TEST(EngineReference, everySettingStandsWithItsDefaultAndItsBounds)
{
    const QString document = Markdown::textOf(u"docs/engine.md"_qs);
    const EngineSettings defaults;
    ASSERT_FALSE(engineNumbers().empty());
    for (const EngineNumber &number : engineNumbers())
        EXPECT_EQ(
            rowOf(document, number.key),
            u"%1 | %2 to %3"_qs.arg(defaults.*number.value).arg(number.least).arg(number.most))
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
            Markdown::captured(u"^\\|[^|\\n]*\\| `(\\w+)` \\| [0-9]"_qs, text) +
            Markdown::captured(u"^(?!ServerMode|QueueFolder)([A-Z]\\w+)=[0-9]"_qs, text);
        EXPECT_FALSE(told.isEmpty()) << document;
        for (const QString &key : told)
            EXPECT_TRUE(known.contains(key)) << document << ": " << qPrintable(key);
    }
}

} // namespace
