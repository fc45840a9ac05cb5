#include "foundation/Normalisation.h"

#include "common/CodePages.h"

#include <algorithm>
#include <array>

namespace norvane {

namespace {

struct Replacement
{
    char16_t from;
    char16_t to;
};

// Closed: Å, å, Æ, æ, Ø, ø, ÿ and ß are left out on purpose.
// clang-format off
constexpr std::array replacements{
    Replacement{u'À', u'A'}, Replacement{u'Á', u'A'}, Replacement{u'Â', u'A'},
    Replacement{u'Ã', u'A'}, Replacement{u'Ä', u'A'},
    Replacement{u'â', u'a'}, Replacement{u'ã', u'a'}, Replacement{u'ä', u'a'},
    Replacement{u'à', u'a'}, Replacement{u'á', u'a'},
    Replacement{u'È', u'E'}, Replacement{u'É', u'E'}, Replacement{u'Ê', u'E'},
    Replacement{u'Ë', u'E'},
    Replacement{u'ê', u'e'}, Replacement{u'ë', u'e'}, Replacement{u'è', u'e'},
    Replacement{u'é', u'e'},
    Replacement{u'Ì', u'I'}, Replacement{u'Í', u'I'}, Replacement{u'Î', u'I'},
    Replacement{u'Ï', u'I'},
    Replacement{u'î', u'i'}, Replacement{u'ï', u'i'}, Replacement{u'ì', u'i'},
    Replacement{u'í', u'i'},
    Replacement{u'Ò', u'O'}, Replacement{u'Ó', u'O'}, Replacement{u'Ô', u'O'},
    Replacement{u'Õ', u'O'}, Replacement{u'Ö', u'O'},
    Replacement{u'ô', u'o'}, Replacement{u'õ', u'o'}, Replacement{u'ö', u'o'},
    Replacement{u'ò', u'o'}, Replacement{u'ó', u'o'},
    Replacement{u'Ù', u'U'}, Replacement{u'Ú', u'U'}, Replacement{u'Û', u'U'},
    Replacement{u'Ü', u'U'},
    Replacement{u'û', u'u'}, Replacement{u'ü', u'u'}, Replacement{u'ù', u'u'},
    Replacement{u'ú', u'u'},
    Replacement{u'Ý', u'Y'},
    Replacement{u'ý', u'y'},
    Replacement{u'ñ', u'n'},
    Replacement{u'Ñ', u'N'},
    Replacement{u'Ç', u'C'},
    Replacement{u'ç', u'c'},
};
// clang-format on
static_assert(replacements.size() == 50);

// All accented letters of the table lie below 256, and none is the outcome of another, so one look
// for each character does what fifty passes over the text would.
constexpr auto plainForms = [] {
    std::array<char16_t, 256> forms{};
    for (std::size_t code = 0; code < forms.size(); ++code)
        forms[code] = static_cast<char16_t>(code);
    for (const Replacement &replacement : replacements)
        forms[replacement.from] = replacement.to;
    return forms;
}();

} // namespace

QString RemoveAccents(const QString &text)
{
    QString plain = text;
    std::ranges::transform(plain, plain.begin(), [](QChar unit) {
        return unit.unicode() < plainForms.size() ? QChar(plainForms[unit.unicode()]) : unit;
    });
    return plain;
}

QString NormalizeSMSText(bool keepAccents, const QString &text)
{
    const QString plain = keepAccents ? text : RemoveAccents(text);
    return CodePages::fromAnsi(CodePages::ansiToOem(CodePages::toAnsi(plain)));
}

} // namespace norvane
