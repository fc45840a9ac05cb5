#include "docs/Markdown.h"

#include "foundation/RowsetReader.h"

#include <QFile>
#include <QFileInfo>
#include <QMap>
#include <QRegularExpression>

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

struct Guide
{
    const char *document;
    const char *language; ///< of the captions
    QList<int> (*captions)();
};

void PrintTo(const Guide &guide, std::ostream *out)
{
    *out << guide.document;
}

/// What the windows show without a language file.
const QStringList fixedTexts{u"Modo de funcionamento"_s,
                             u"Servidor"_s,
                             u"Cliente"_s,
                             u"Pasta envio:"_s,
                             u"Estado"_s,
                             u"Physical/Virtual Serial port"_s,
                             u"Infrared"_s,
                             u"Bluetooth"_s,
                             u"AT Command"_s,
                             u"Nokia FBus"_s,
                             u"Nokia MBus"_s,
                             u"Localização da pasta de envio de SMS"_s};

/// Captions of the console and its dialogs, which each of their guides has to name.
QList<int> consoleCaptions()
{
    QList<int> ids{14, 16, 3760011, 3760012, 3760035, 3760090};
    for (int id = 3760001; id <= 3760009; ++id)
        ids.append(id);
    for (int id = 3760036; id <= 3760040; ++id)
        ids.append(id);
    for (int id = 3760042; id <= 3760049; ++id)
        ids.append(id);
    return ids + QList<int>{3760055, 3760056};
}

/// Those of the history: title, tabs, search, states, steps, buttons, boxes to tick and charts.
QList<int> historyCaptions()
{
    QList<int> ids{3770016, 3770019, 3770020, 3770052, 3770072};
    for (int id = 3770001; id <= 3770015; ++id) {
        if (id != 3770006) // the hint in the empty search field
            ids.append(id);
    }
    for (int id = 3770029; id <= 3770044; ++id)
        ids.append(id);
    for (int id = 3770053; id <= 3770059; ++id)
        ids.append(id);
    for (int id = 3770073; id <= 3770075; ++id)
        ids.append(id);
    return ids;
}

/// There are no English texts: the guides in that language name the Spanish ones.
const Guide guides[] = {{"docs/guia-es.md", "ESN", consoleCaptions},
                        {"docs/guia-pt.md", "PTG", consoleCaptions},
                        {"docs/guide-en.md", "ESN", consoleCaptions},
                        {"docs/historial-es.md", "ESN", historyCaptions},
                        {"docs/historico-pt.md", "PTG", historyCaptions},
                        {"docs/history-en.md", "ESN", historyCaptions}};

QMap<int, QString> textsOf(const char *language)
{
    QFile file(
        QStringLiteral(NORVANE_LANGUAGE_DIR "/NorvaneSMS_%1.XML").arg(QLatin1String(language)));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    QMap<int, QString> texts;
    EXPECT_TRUE(RowsetReader::read(file.readAll(), {u"ResID"_s, u"ResSTring"_s},
                                   [&](const QStringList &values) {
                                       // The sign marks a key, which no guide tells of a caption.
                                       QString text = values.at(1);
                                       texts.insert(values.at(0).toInt(), text.remove(u'&'));
                                       return true;
                                   }));
    texts.remove(0); // the title of the boxes: a placeholder alone
    return texts;
}

/// What `text` looks like on the screen, with anything for its arguments.
QRegularExpression shown(const QString &text)
{
    static const QRegularExpression argument(u"%[0-9]"_s);
    QString plain = text;
    plain = plain.replace(u"{\\CrLf}"_s, u" "_s).simplified();
    QStringList pieces = plain.split(argument);
    for (QString &piece : pieces)
        piece = QRegularExpression::escape(piece);
    return QRegularExpression(u"\\A"_s + pieces.join(u".*"_s) + u"(?: \\( [0-9]+ \\))?\\z"_s);
}

class Captions : public testing::TestWithParam<Guide>
{
protected:
    const QStringList m_bold =
        Markdown::boldTexts(Markdown::textOf(QLatin1String(GetParam().document)));
    const QMap<int, QString> m_texts = textsOf(GetParam().language);
};

TEST_P(Captions, whatAGuideSetsInBoldIsATextOfItsWindows)
{
    EXPECT_GT(m_bold.size(), 40);
    for (const QString &bold : m_bold) {
        const bool known = fixedTexts.contains(bold) ||
                           std::any_of(m_texts.cbegin(), m_texts.cend(), [&](const QString &text) {
                               return shown(text).match(bold).hasMatch();
                           });
        EXPECT_TRUE(known) << qPrintable(bold);
    }
}

TEST_P(Captions, aGuideNamesEveryCaption)
{
    for (const int id : GetParam().captions()) {
        ASSERT_TRUE(m_texts.contains(id)) << id;
        EXPECT_TRUE(m_bold.contains(m_texts.value(id))) << id << qPrintable(m_texts.value(id));
    }
}

INSTANTIATE_TEST_SUITE_P(guides, Captions, testing::ValuesIn(guides), [](const auto &guide) {
    return QFileInfo(QLatin1String(guide.param.document))
        .completeBaseName()
        .remove(u'-')
        .toStdString();
});

} // namespace

} // namespace norvane
