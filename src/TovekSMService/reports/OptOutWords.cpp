#include "TovekSMService/reports/OptOutWords.h"

namespace norvane {

namespace {

/// Without case, accents, blanks around it and a full stop at its end.
QString plain(QStringView text)
{
    QStringView core = text.trimmed();
    if (core.endsWith(u'.'))
        core = core.chopped(1).trimmed();
    QString letters;
    for (const QChar unit : core.toString().normalized(QString::NormalizationForm_KD))
        if (!unit.isMark())
            letters += unit;
    return letters.toCaseFolded();
}

QSet<QString> wordsOf(const QString &list)
{
    QSet<QString> words;
    for (const QStringView entry : QStringView(list).split(u',')) {
        const QString word = plain(entry);
        if (!word.isEmpty())
            words.insert(word);
    }
    return words;
}

} // namespace

OptOutWords::OptOutWords(const QString &optOut, const QString &optIn)
    : m_optOut(wordsOf(optOut)), m_optIn(wordsOf(optIn))
{}

OptOutWords::Answer OptOutWords::answerOf(QStringView text) const
{
    // Nothing longer is one word: no need to look at five thousand characters.
    constexpr qsizetype maxAnswer = 200;
    if (text.size() > maxAnswer)
        return Answer::Other;
    const QString word = plain(text);
    if (m_optOut.contains(word))
        return Answer::OptOut;
    return m_optIn.contains(word) ? Answer::OptIn : Answer::Other;
}

} // namespace norvane
