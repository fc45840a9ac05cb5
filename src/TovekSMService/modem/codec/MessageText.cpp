#include "TovekSMService/modem/codec/MessageText.h"

#include "TovekSMService/modem/codec/GsmAlphabet.h"

#include <QTextBoundaryFinder>

#include <algorithm>

namespace norvane {

namespace {

QString withoutLoneSurrogates(const QString &text)
{
    QString result = text;
    for (qsizetype i = 0; i < result.size(); ++i) {
        if (!result.at(i).isSurrogate())
            continue;
        const bool paired = result.at(i).isHighSurrogate() && i + 1 < result.size() &&
                            result.at(i + 1).isLowSurrogate();
        if (paired)
            ++i;
        else
            result[i] = QChar::ReplacementCharacter;
    }
    return result;
}

bool fitsGsm7(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar character) {
        return GsmAlphabet::septetCount(character.unicode()) > 0;
    });
}

int cost(QStringView text, Alphabet alphabet)
{
    if (alphabet == Alphabet::Ucs2)
        return static_cast<int>(text.size());
    int septets = 0;
    for (const QChar character : text)
        septets += GsmAlphabet::septetCount(character.unicode());
    return septets;
}

/// Fills parts up to their capacity, one piece after the other.
class PartFiller
{
public:
    PartFiller(Alphabet alphabet, int capacity) : m_alphabet(alphabet), m_capacity(capacity) {}

    /// Adds a piece that is kept whole if it fits in a part; a longer one is cut at code points.
    void add(QStringView piece)
    {
        if (cost(piece, m_alphabet) <= m_capacity) {
            addWhole(piece);
            return;
        }
        for (qsizetype i = 0; i < piece.size();) {
            const qsizetype length = piece.at(i).isHighSurrogate() ? 2 : 1; // none is alone by now
            addWhole(piece.mid(i, length));
            i += length;
        }
    }

    QStringList takeParts()
    {
        m_parts.append(m_current);
        return m_parts;
    }

private:
    void addWhole(QStringView piece)
    {
        const int pieceCost = cost(piece, m_alphabet);
        if (m_used + pieceCost > m_capacity) {
            m_parts.append(m_current);
            m_current.clear();
            m_used = 0;
        }
        m_current.append(piece);
        m_used += pieceCost;
    }

    Alphabet m_alphabet;
    int m_capacity;
    int m_used = 0;
    QString m_current;
    QStringList m_parts;
};

QStringList cut(const QString &text, Alphabet alphabet, int capacity)
{
    PartFiller filler(alphabet, capacity);
    QTextBoundaryFinder finder(QTextBoundaryFinder::Grapheme, text);
    qsizetype start = 0;
    for (qsizetype end = finder.toNextBoundary(); end > start; end = finder.toNextBoundary()) {
        filler.add(QStringView(text).mid(start, end - start));
        start = end;
    }
    if (start < text.size())
        filler.add(QStringView(text).mid(start));
    return filler.takeParts();
}

} // namespace

std::optional<MessageText> prepareText(const QString &text)
{
    // Hostile lengths end here, before anything is copied: a character takes one unit at least.
    if (text.size() > maxParts * gsm7Part)
        return std::nullopt;

    const QString clean = withoutLoneSurrogates(text);
    const Alphabet alphabet = fitsGsm7(clean) ? Alphabet::Gsm7 : Alphabet::Ucs2;
    const bool gsm7 = alphabet == Alphabet::Gsm7;
    if (cost(clean, alphabet) <= (gsm7 ? gsm7Single : ucs2Single))
        return MessageText{alphabet, {clean}};

    const QStringList parts = cut(clean, alphabet, gsm7 ? gsm7Part : ucs2Part);
    if (parts.size() > maxParts)
        return std::nullopt;
    return MessageText{alphabet, parts};
}

} // namespace norvane
