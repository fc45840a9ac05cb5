#include "docs/Markdown.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <gtest/gtest.h>

namespace {

const QString Root = QStringLiteral(NORVANE_SOURCE_DIR "/");

QString inOneLine(QString text)
{
    return text.simplified();
}

} // namespace

QStringList Markdown::documents()
{
    QStringList result{u"README.md"_qs, u"CONTRIBUTING.md"_qs, u"resources/language/README.md"_qs};
    for (const QString &name : QDir(Root + u"docs"_qs).entryList({u"*.md"_qs}, QDir::Files))
        result.append(u"docs/"_qs + name);
    return result;
}

QString Markdown::textOf(const QString &path)
{
    QFile file(Root + path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(path);
    return QString::fromUtf8(file.readAll());
}

QString Markdown::prose(const QString &text)
{
    static const QRegularExpression fenced(u"^[ ]*```.*?^[ ]*```[ ]*$"_qs,
                                           QRegularExpression::MultilineOption |
                                               QRegularExpression::DotMatchesEverythingOption);
    QString result = text;
    return result.remove(fenced);
}

QStringList Markdown::linkTargets(const QString &text)
{
    return captured(u"\\]\\(([^)\\s]+)\\)"_qs, prose(text));
}

QStringList Markdown::codeSpans(const QString &text)
{
    return captured(u"`([^`\\n]+)`"_qs, prose(text));
}

QStringList Markdown::boldTexts(const QString &text)
{
    QStringList result;
    for (const QString &bold : captured(u"\\*\\*((?:[^*]|\\*(?!\\*))+)\\*\\*"_qs, prose(text)))
        result.append(inOneLine(bold));
    return result;
}

QStringList Markdown::anchors(const QString &text)
{
    static const QRegularExpression dropped(u"[^\\w\\- ]"_qs,
                                            QRegularExpression::UseUnicodePropertiesOption);
    QStringList result;
    for (const QString &heading : captured(u"^#+ +([^\\n]+)$"_qs, prose(text))) {
        QString anchor = heading.trimmed().toLower();
        result.append(anchor.remove(dropped).replace(u' ', u'-'));
    }
    return result;
}

QList<std::pair<QString, QString>> Markdown::sections(const QString &text)
{
    static const QRegularExpression heading(u"^#+ +([^\\n]+)$"_qs,
                                            QRegularExpression::MultilineOption);
    QList<std::pair<QString, QString>> result;
    const QString body = prose(text);
    for (auto matches = heading.globalMatch(body); matches.hasNext();) {
        const auto match = matches.next();
        if (!match.captured().startsWith(u"### "_qs))
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
