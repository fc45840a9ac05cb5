#include "property/Texts.h"

namespace norvane {

using namespace Qt::StringLiterals;

namespace {

QString units(std::initializer_list<char16_t> list)
{
    QString text;
    for (const char16_t unit : list)
        text += QChar(unit);
    return text;
}

QString character(char32_t code)
{
    return QString::fromUcs4(&code, 1);
}

QString anyOf(const QString &letters, QRandomGenerator &random)
{
    return letters.mid(random.bounded(static_cast<int>(letters.size())), 1);
}

} // namespace

QList<NamedText> pieces()
{
    return {
        {"nothing", QString()},
        {"NUL", units({0})},
        {"escape", units({0x1B})},
        {"end of a submission", units({0x1A})},
        {"delete", units({0x7F})},
        {"line ends", u"\r\n\n\r"_s},
        {"the extension table", u"^{}\\[~]|€\f"_s},
        {"letters with accents", u"àèéìòùñÑçÇáÁ"_s},
        {"Greek capitals of the alphabet", u"ΔΦΓΛΩΠΨΣΘΞ"_s},
        {"a no-break space", units({0xA0})},
        {"a byte order mark", units({0xFEFF})},
        {"a swapped byte order mark", units({0xFFFE})},
        {"the last unit", units({0xFFFF})},
        {"a high half alone", units({0xD83D})},
        {"a low half alone", units({0xDE00})},
        {"halves the wrong way round", units({0xDE00, 0xD83D})},
        {"two high halves and a low one", units({0xD83D, 0xD83D, 0xDE00})},
        {"a letter with three marks", units({u'e', 0x0301, 0x0323, 0x0308})},
        {"a mark alone", units({0x0301})},
        {"Hangul in its parts", units({0x1112, 0x1161, 0x11AB})},
        {"Devanagari with joiners", units({0x0915, 0x094D, 0x200D, 0x0937, 0x093F})},
        {"right to left with marks", units({0x202E, 0x05E9, 0x05C1, 0x202C, 0x0645})},
        {"a family", u"\U0001F468\u200D\U0001F469\u200D\U0001F467\u200D\U0001F466"_s},
        {"a hand of a colour", u"\U0001F44D\U0001F3FD"_s},
        {"a flag", u"\U0001F1EA\U0001F1F8"_s},
        {"a flag of a region", u"\U0001F3F4\U000E0067\U000E0062\U000E0065\U000E006E"
                               "\U000E0067\U000E007F"_s},
        {"a key", u"1\uFE0F\u20E3"_s},
        {"the last character", character(0x10FFFF)},
        {"a private character", character(0xF0000)},
        {"ideographs of two planes", u"漢字\U00020BB7"_s},
    };
}

QString randomText(QRandomGenerator &random, int max)
{
    static const QString ordinary = u"abc XYZ 0123@£$¥\r\nñÑÇÄöüß¿¡"_s;
    static const QString escaped = ordinary + u"^{}\\[~]|€€€€€€€€\f"_s;
    static const QList<NamedText> hard = pieces();
    const int kind = random.bounded(6);
    const int length = random.bounded(max + 1);
    QString text;
    while (text.size() < length) {
        switch (kind) {
        case 0:
            text += anyOf(ordinary, random);
            break;
        case 1:
            text += anyOf(escaped, random);
            break;
        case 2:
            text += QChar(static_cast<char16_t>(random.bounded(0x10000)));
            break;
        case 3:
            text += character(static_cast<char32_t>(random.bounded(0x10000, 0x110000)));
            break;
        case 4:
            text += QChar(static_cast<char16_t>(random.bounded(0xA0)));
            break;
        default:
            text += hard.at(random.bounded(static_cast<int>(hard.size()))).text;
        }
    }
    return text.left(length);
}

QString arriving(const QString &text)
{
    QString result;
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar unit = text.at(i);
        const bool isPair =
            unit.isHighSurrogate() && i + 1 < text.size() && text.at(i + 1).isLowSurrogate();
        if (isPair) {
            result += unit;
            result += text.at(++i);
        } else {
            result += unit.isSurrogate() ? QChar(0xFFFD) : unit;
        }
    }
    return result;
}

} // namespace norvane
