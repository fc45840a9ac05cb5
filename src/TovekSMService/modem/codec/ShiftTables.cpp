#include "TovekSMService/modem/codec/ShiftTables.h"

#include <algorithm>
#include <string_view>

namespace norvane {

namespace {

/// A character and the septet that stands for it behind the escape.
struct Shifted
{
    quint8 septet;
    char16_t character;
};

// Each table in the order of its septets, 16 characters a line. 0x1B is the escape.
constexpr std::u16string_view defaultTable = u"@\u00A3$\u00A5\u00E8\u00E9\u00F9\u00EC"
                                             u"\u00F2\u00C7\n\u00D8\u00F8\r\u00C5\u00E5"
                                             u"\u0394_\u03A6\u0393\u039B\u03A9\u03A0\u03A8"
                                             u"\u03A3\u0398\u039E\uFFFF\u00C6\u00E6\u00DF\u00C9"
                                             u" !\"#\u00A4%&'()*+,-./"
                                             u"0123456789:;<=>?"
                                             u"\u00A1ABCDEFGHIJKLMNO"
                                             u"PQRSTUVWXYZ\u00C4\u00D6\u00D1\u00DC\u00A7"
                                             u"\u00BFabcdefghijklmno"
                                             u"pqrstuvwxyz\u00E4\u00F6\u00F1\u00FC\u00E0";

constexpr std::u16string_view portugueseTable = u"@\u00A3$\u00A5\u00EA\u00E9\u00FA\u00ED"
                                                u"\u00F3\u00E7\n\u00D4\u00F4\r\u00C1\u00E1"
                                                u"\u0394_\u00AA\u00C7\u00C0\u221E^\\"
                                                u"\u20AC\u00D3|\uFFFF\u00C2\u00E2\u00CA\u00C9"
                                                u" !\"#\u00BA%&'()*+,-./"
                                                u"0123456789:;<=>?"
                                                u"\u00CDABCDEFGHIJKLMNO"
                                                u"PQRSTUVWXYZ\u00C3\u00D5\u00DA\u00DC\u00A7"
                                                u"~abcdefghijklmno"
                                                u"pqrstuvwxyz\u00E3\u00F5`\u00FC\u00E0";

constexpr qsizetype tableSize = 128;
static_assert(defaultTable.size() == tableSize && portugueseTable.size() == tableSize);

constexpr Shifted defaultShift[] = {{0x0A, u'\f'}, {0x14, u'^'},     {0x28, u'{'}, {0x29, u'}'},
                                    {0x2F, u'\\'}, {0x3C, u'['},     {0x3D, u'~'}, {0x3E, u']'},
                                    {0x40, u'|'},  {0x65, u'\u20AC'}};

/// Of the languages that have a table of their own, what it holds beyond the default one.
constexpr Shifted spanishShift[] = {{0x09, u'\u00E7'}, {0x41, u'\u00C1'}, {0x49, u'\u00CD'},
                                    {0x4F, u'\u00D3'}, {0x55, u'\u00DA'}, {0x61, u'\u00E1'},
                                    {0x69, u'\u00ED'}, {0x6F, u'\u00F3'}, {0x75, u'\u00FA'}};

constexpr Shifted portugueseShift[] = {
    {0x05, u'\u00EA'}, {0x09, u'\u00E7'}, {0x0B, u'\u00D4'}, {0x0C, u'\u00F4'}, {0x0E, u'\u00C1'},
    {0x0F, u'\u00E1'}, {0x12, u'\u03A6'}, {0x13, u'\u0393'}, {0x15, u'\u03A9'}, {0x16, u'\u03A0'},
    {0x17, u'\u03A8'}, {0x18, u'\u03A3'}, {0x19, u'\u0398'}, {0x1F, u'\u00CA'}, {0x41, u'\u00C0'},
    {0x49, u'\u00CD'}, {0x4F, u'\u00D3'}, {0x55, u'\u00DA'}, {0x5B, u'\u00C3'}, {0x5C, u'\u00D5'},
    {0x61, u'\u00C2'}, {0x69, u'\u00ED'}, {0x6F, u'\u00F3'}, {0x75, u'\u00FA'}, {0x7B, u'\u00E3'},
    {0x7C, u'\u00F5'}, {0x7F, u'\u00E2'}};

template <std::size_t Size>
char16_t characterOf(const Shifted (&table)[Size], quint8 septet)
{
    const auto found = std::find_if(std::begin(table), std::end(table),
                                    [septet](const Shifted &row) { return row.septet == septet; });
    return found == std::end(table) ? ShiftTables::none : found->character;
}

} // namespace

char16_t ShiftTables::locking(GsmLanguage language, quint8 septet)
{
    if (septet >= tableSize)
        return none;
    return language == GsmLanguage::Portuguese ? portugueseTable[septet] : defaultTable[septet];
}

char16_t ShiftTables::single(GsmLanguage language, quint8 septet)
{
    char16_t character = none;
    if (language == GsmLanguage::Spanish)
        character = characterOf(spanishShift, septet);
    else if (language == GsmLanguage::Portuguese)
        character = characterOf(portugueseShift, septet);
    return character == none ? characterOf(defaultShift, septet) : character;
}

} // namespace norvane
