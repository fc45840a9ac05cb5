#pragma once

#include <QSet>
#include <QString>
#include <QStringView>

namespace norvane {

/// The answers with which a recipient leaves the list of those who get campaigns, and comes back.
class OptOutWords
{
public:
    enum class Answer { Other, OptOut, OptIn };

    /// @param optOut, optIn  words parted by commas; a word of both opts out
    OptOutWords(const QString &optOut, const QString &optIn);

    /// What a received text asks for: it is one of the words alone, whatever its case and accents,
    /// with blanks and a full stop around it at most.
    Answer answerOf(QStringView text) const;

private:
    QSet<QString> m_optOut;
    QSet<QString> m_optIn;
};

} // namespace norvane
