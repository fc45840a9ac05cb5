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
    const QString &folded() const { return m_folded; }
    bool isIn(const QString &phone, const QString &text) const;

    /// All of a message in which one is looked for, as one folded text.
    static QString folded(const QString &phone, const QString &text);

private:
    QString m_folded;
};

} // namespace norvane
