#include "docs/Markdown.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

const QString sourceFolder = QStringLiteral(NORVANE_SOURCE_DIR "/");

QString inOneLine(QString text)
{
    return text.simplified();
}

} // namespace

QStringList Markdown::documents()
{
    QStringList result{u"README.md"_s, u"CONTRIBUTING.md"_s, u"resources/language/README.md"_s};
    for (const QString &name : QDir(sourceFolder + u"docs"_s).entryList({u"*.md"_s}, QDir::Files))
        result.append(u"docs/"_s + name);
    return result;
}

QString Markdown::textOf(const QString &path)
{
    QFile file(sourceFolder + path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return QString::fromUtf8(file.readAll());
}

QString Markdown::prose(const QString &text)
{
    static const QRegularExpression fenced(u"^[ ]*```.*?^[ ]*```[ ]*$"_s,
                                           QRegularExpression::MultilineOption |
                                               QRegularExpression::DotMatchesEverythingOption);
    QString result = text;
    return result.remove(fenced);
}

QStringList Markdown::linkTargets(const QString &text)
{
    return captured(u"\\]\\(([^)\\s]+)\\)"_s, prose(text));
}

QStringList Markdown::codeSpans(const QString &text)
{
    return captured(u"`([^`\\n]+)`"_s, prose(text));
}

QStringList Markdown::boldTexts(const QString &text)
{
    QStringList result;
    for (const QString &bold : captured(u"\\*\\*((?:[^*]|\\*(?!\\*))+)\\*\\*"_s, prose(text)))
        result.append(inOneLine(bold));
    return result;
}

QStringList Markdown::anchors(const QString &text)
{
    static const QRegularExpression dropped(u"[^\\w\\- ]"_s,
                                            QRegularExpression::UseUnicodePropertiesOption);
    QStringList result;
    for (const QString &heading : captured(u"^#+ +([^\\n]+)$"_s, prose(text))) {
        QString anchor = heading.trimmed().toLower();
        result.append(anchor.remove(dropped).replace(u' ', u'-'));
    }
    return result;
}

QList<std::pair<QString, QString>> Markdown::sections(const QString &text)
{
    static const QRegularExpression heading(u"^#+ +([^\\n]+)$"_s,
                                            QRegularExpression::MultilineOption);
    QList<std::pair<QString, QString>> result;
    const QString body = prose(text);
    for (auto matches = heading.globalMatch(body); matches.hasNext();) {
        const auto match = matches.next();
        if (!match.captured().startsWith(u"### "_s))
            continue;
        const qsizetype end = matches.hasNext() ? matches.peekNext().capturedStart() : body.size();
        result.append(
            {match.captured(1), body.sliced(match.capturedEnd(), end - match.capturedEnd())});
    }
    return result;
}

QStringList Markdown::captured(const QString &pattern, const QString &text)
{
    const QRegularExpression expression(pattern, QRegularExpression::MultilineOption);
    QStringList result;
    for (auto matches = expression.globalMatch(text); matches.hasNext();)
        result.append(matches.next().captured(1));
    return result;
}

} // namespace norvane
