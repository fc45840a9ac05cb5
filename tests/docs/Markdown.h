#pragma once

#include <QString>
#include <QStringList>

#include <utility>

namespace norvane {

/// The project's documents, as the tests look at them.
namespace Markdown {

/// Paths of all documents, from the project's root.
QStringList documents();

/// Whole text of a file; `path` from the project's root.
QString textOf(const QString &path);

/// `text` without its fenced blocks of code.
QString prose(const QString &text);

/// What links and pictures of the prose lead to, as written.
QStringList linkTargets(const QString &text);

/// Texts between `` ` `` in the prose.
QStringList codeSpans(const QString &text);

/// Texts between "**" in the prose, with line breaks as blanks.
QStringList boldTexts(const QString &text);

/// The names by which links reach the headings.
QStringList anchors(const QString &text);

/// The sections that begin with a heading of the third level: their headings and what stands below.
QList<std::pair<QString, QString>> sections(const QString &text);

/// The first group of each match of `pattern` in `text`.
QStringList captured(const QString &pattern, const QString &text);

} // namespace Markdown

} // namespace norvane
