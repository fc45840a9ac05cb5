#include "TovekSMService/history/TextFold.h"

#include <algorithm>
#include <vector>

namespace norvane {

namespace {

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

QString foldedSlowly(const QString &text)
{
    const QString folded =
        withoutMarks(wellFormed(text).normalized(QString::NormalizationForm_KD)).toCaseFolded();
    // Folding may compose what was apart.
    return withoutMarks(folded.normalized(QString::NormalizationForm_KD));
}

/// Characters below this one are folded by a table: those of the Latin, Greek and Cyrillic scripts
/// and the usual punctuation.
constexpr char16_t tableEnd = 0x2100;

/// A character is folded alone as it is among others.
const std::vector<QString> &foldedCharacters()
{
    static const std::vector<QString> table = [] {
        std::vector<QString> characters;
        characters.reserve(tableEnd);
        for (char16_t character = 0; character < tableEnd; ++character)
            characters.push_back(foldedSlowly(QString(QChar(character))));
        return characters;
    }();
    return table;
}

bool isInTable(QChar character)
{
    return character.unicode() < tableEnd;
}

/// What is folded by its case alone.
bool isPlain(QChar character)
{
    return character.unicode() > 0 && character.unicode() < 0x80;
}

QChar plainFold(QChar character)
{
    const char16_t unit = character.unicode();
    return unit >= u'A' && unit <= u'Z' ? QChar(char16_t(unit + (u'a' - u'A'))) : character;
}

} // namespace

/// Nearly all characters of a text are plain ones, which are folded a run at a time.
QString TextFold::fold(const QString &text)
{
    if (!std::all_of(text.cbegin(), text.cend(), isInTable))
        return foldedSlowly(text);
    QString folded;
    folded.reserve(text.size());
    for (auto at = text.cbegin(); at != text.cend();) {
        const auto end = std::find_if_not(at, text.cend(), isPlain);
        const qsizetype before = folded.size();
        folded.resize(before + (end - at));
        std::transform(at, end, folded.begin() + before, plainFold);
        at = end;
        for (; at != text.cend() && !isPlain(*at); ++at)
            folded += foldedCharacters()[at->unicode()];
    }
    return folded;
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
