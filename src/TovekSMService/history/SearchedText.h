#pragma once

#include <QString>

namespace norvane {

/// A text that messages are looked through for, in phone and text.
class SearchedText
{
public:
    explicit SearchedText(const QString &text);

    /// Whether it is in everything.
    bool isEmpty() const { return m_folded.isEmpty(); }
    /// The text as it is in what index() makes of a message that it is in.
    QString inIndex() const;
    bool isIn(const QString &phone, const QString &text) const;

    /// All of a message in which one is looked for, as one folded text to be indexed. As two
    /// characters follow, a piece of three begins with each of its own.
    static QString index(const QString &phone, const QString &text);

private:
    QString m_folded;
};

} // namespace norvane
