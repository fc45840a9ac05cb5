#include "TovekSMService/history/TextFold.h"

#include <algorithm>

namespace norvane {

namespace {

bool isPlain(QChar character)
{
    return character.unicode() > 0 && character.unicode() < 0x80;
}

QString foldedPlain(const QString &text)
{
    QString folded = text;
    for (QChar &character : folded) {
        if (character >= u'A' && character <= u'Z')
            character = QChar(character.unicode() + (u'a' - u'A'));
    }
    return folded;
}

/// With U+FFFD in the place of what is no character.
QString wellFormed(const QString &text)
{
    QString clean = text;
    for (qsizetype at = 0; at < clean.size(); ++at) {
        const QChar character = clean.at(at);
        if (character.isHighSurrogate() && at + 1 < clean.size() &&
            clean.at(at + 1).isLowSurrogate())
            ++at;
        else if (character.isNull() || character.isSurrogate())
            clean[at] = QChar::ReplacementCharacter;
    }
    return clean;
}

QString withoutMarks(const QString &text)
{
    QString bare;
    bare.reserve(text.size());
    for (qsizetype at = 0; at < text.size(); ++at) {
        const bool isPair = text.at(at).isHighSurrogate() && at + 1 < text.size();
        const char32_t character =
            isPair ? QChar::surrogateToUcs4(text.at(at), text.at(at + 1)) : text.at(at).unicode();
        if (!QChar::isMark(character))
            bare += QStringView(text).sliced(at, isPair ? 2 : 1);
        at += isPair ? 1 : 0;
    }
    return bare;
}

} // namespace

QString TextFold::fold(const QString &text)
{
    if (std::all_of(text.cbegin(), text.cend(), isPlain))
        return foldedPlain(text);
    const QString folded =
        withoutMarks(wellFormed(text).normalized(QString::NormalizationForm_KD)).toCaseFolded();
    // Folding may compose what was apart.
    return withoutMarks(folded.normalized(QString::NormalizationForm_KD));
}

QString TextFold::dialled(const QString &phone)
{
    QString number;
    number.reserve(phone.size());
    for (const QChar character : phone) {
        const bool isDialled = character == u'+' || character == u'*' || character == u'#';
        if (isDialled || !(character.isSpace() || character.isPunct()))
            number += character;
    }
    return number;
}

} // namespace norvane
