#include "layers/CodeChecks.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>
#include <string_view>

namespace norvane {

namespace {

namespace fs = std::filesystem;

const std::string &blanks()
{
    static const std::string characters = " \t\n";
    return characters;
}

std::string trimmed(const std::string &text)
{
    const std::size_t start = text.find_first_not_of(blanks());
    if (start == std::string::npos)
        return {};
    return text.substr(start, text.find_last_not_of(blanks()) + 1 - start);
}

/// `code` with blanks in the place of the preprocessor's lines.
std::string withoutDirectives(std::string code)
{
    bool inDirective = false;
    std::size_t start = 0;
    while (start < code.size()) {
        const std::size_t end = std::min(code.find('\n', start), code.size());
        const std::size_t first = code.find_first_not_of(" \t", start);
        inDirective = inDirective || (first < end && code[first] == '#');
        const bool goesOn = end > start && code[end - 1] == '\\';
        if (inDirective)
            std::fill(code.begin() + static_cast<std::ptrdiff_t>(start),
                      code.begin() + static_cast<std::ptrdiff_t>(end), ' ');
        inDirective = inDirective && goesOn;
        start = end + 1;
    }
    return code;
}

/// The place behind the bracket that closes the one at `open`.
std::size_t behindBracket(const std::string &code, std::size_t open)
{
    const char opening = code[open];
    const char closing = opening == '{' ? '}' : ')';
    int depth = 0;
    for (std::size_t place = open; place < code.size(); ++place) {
        if (code[place] == opening)
            ++depth;
        else if (code[place] == closing && --depth == 0)
            return place + 1;
    }
    return code.size();
}

bool startsWithWord(const std::string &text, const std::string &word)
{
    return text.starts_with(word) &&
           (text.size() == word.size() || !isNameCharacter(text[word.size()]));
}

/// "class Name" and nothing more.
bool isForwardDeclaration(const std::string &statement)
{
    for (const std::string word : {"class ", "struct "})
        if (statement.starts_with(word))
            return std::all_of(statement.begin() + static_cast<std::ptrdiff_t>(word.size()),
                               statement.end(), isNameCharacter);
    return false;
}

bool mayStandOutside(const std::string &head, const std::string &body)
{
    if (body.empty())
        return head.empty() || isForwardDeclaration(head) ||
               startsWithWord(head, "using namespace");
    return head == "namespace norvane" || head.starts_with("namespace norvane::") ||
           head.starts_with("int main(") || !placesOf("Q_INIT_RESOURCE", body).empty();
}

/// Replaces what declares meta types, which ends without a semicolon, by blanks.
void removeMetaTypes(std::string &code)
{
    for (const std::size_t place : placesOf("Q_DECLARE_METATYPE(", code)) {
        const std::size_t end = behindBracket(code, code.find('(', place));
        for (std::size_t next = place; next < end; ++next)
            code[next] = ' ';
    }
}

/// The macros among the arguments of the literal whose opening bracket stands at `open`.
bool includesMacro(const std::string &code, std::size_t open)
{
    const std::size_t end = behindBracket(code, open);
    bool quoted = false;
    for (std::size_t place = open; place < end; ++place) {
        if (code[place] == '"')
            quoted = !quoted;
        else if (!quoted && isNameCharacter(code[place]) && code[place + 1] != '"')
            return true;
    }
    return false;
}

/// What a declaration that starts at `place` declares, or nothing where there is no type and name:
/// a constructor, or a condition.
std::string declaredName(const std::string &code, std::size_t place)
{
    static const std::set<std::string> noTypes = {"const", "constexpr", "explicit", "inline",
                                                  "static"};
    std::vector<std::string> names;
    int depth = 0;
    for (; place < code.size(); ++place) {
        const char character = code[place];
        if (isNameCharacter(character)) {
            const std::size_t start = place;
            while (isNameCharacter(code[place + 1]))
                ++place;
            const std::string name = code.substr(start, place + 1 - start);
            if (depth == 0 && !noTypes.contains(name))
                names.push_back(name);
        } else if (character == '<') {
            ++depth;
        } else if (character == '>') {
            --depth;
        } else if (depth == 0 && std::string_view("=({[;").find(character) != std::string::npos) {
            break;
        }
    }
    const bool isOperator = std::find(names.begin(), names.end(), "operator") != names.end();
    return names.size() < 2 || isOperator ? std::string() : names.back();
}

bool isCamelBack(const std::string &name)
{
    const bool hasPrefix =
        name.size() > 1 && name[0] == 'k' && std::isupper(static_cast<unsigned char>(name[1])) != 0;
    return std::islower(static_cast<unsigned char>(name.front())) != 0 && !hasPrefix &&
           name.find('_') == std::string::npos;
}

/// The name that ends before `end`.
std::string nameBefore(const std::string &text, std::size_t end)
{
    std::size_t start = end;
    while (start > 0 && isNameCharacter(text[start - 1]))
        --start;
    return text.substr(start, end - start);
}

/// "Store" of "bool Store::open(".
std::string classOfDefinition(const std::string &line)
{
    const std::size_t bracket = line.find('(');
    const std::size_t scope = line.rfind("::", bracket);
    if (bracket == std::string::npos || scope == std::string::npos || line.find('=') < bracket)
        return {};
    const std::string member = trimmed(line.substr(scope + 2, bracket - scope - 2));
    const std::size_t start = member.starts_with('~') ? 1 : 0;
    const bool isName = std::all_of(member.begin() + static_cast<std::ptrdiff_t>(start),
                                    member.end(), isNameCharacter) ||
                        member.starts_with("operator");
    return isName && member.size() > start ? nameBefore(line, scope) : std::string();
}

bool isOfOnePlatform(const fs::path &file)
{
    const std::string name = file.stem().string();
    return file.parent_path().filename() == "platform" &&
           (name.starts_with("Linux") || name.ends_with("Linux") || name.ends_with("Posix"));
}

} // namespace

Breaches declarationsOutsideNamespace(const std::string &code)
{
    std::string declarations = withoutDirectives(code);
    removeMetaTypes(declarations);
    Breaches breaches;
    std::size_t start = 0;
    while (start < declarations.size()) {
        const std::size_t end =
            std::min(declarations.find_first_of(";{", start), declarations.size());
        const std::string head = trimmed(declarations.substr(start, end - start));
        const bool hasBody = end < declarations.size() && declarations[end] == '{';
        const std::size_t behind = hasBody ? behindBracket(declarations, end) : end + 1;
        if (!mayStandOutside(head, hasBody ? declarations.substr(end, behind - end) : ""))
            breaches.push_back({declarations.find(head, start), head});
        start = behind;
    }
    return breaches;
}

Breaches longLiterals(const std::string &code)
{
    Breaches breaches;
    for (const std::string word :
         {"QStringLiteral", "QLatin1String", "QLatin1StringView", "QByteArrayLiteral"}) {
        for (const std::size_t place : placesOf(word, code)) {
            const std::size_t open = code.find_first_not_of(blanks(), place + word.size());
            if (open == std::string::npos || code[open] != '(')
                continue;
            const std::size_t first = code.find_first_not_of(blanks(), open + 1);
            const bool isLiteral = code[first] == '"' || code.compare(first, 2, "u\"") == 0;
            if (isLiteral && !includesMacro(code, open))
                breaches.push_back({place, word});
        }
    }
    for (std::size_t place = code.find("\"_qs"); place != std::string::npos;
         place = code.find("\"_qs", place + 1))
        breaches.push_back({place, "_qs"});
    return breaches;
}

Breaches oddlyNamedConstants(const std::string &code)
{
    Breaches breaches;
    for (const std::string word : {"constexpr", "static const"}) {
        for (const std::size_t place : placesOf(word, code)) {
            const std::string name = declaredName(code, place + word.size());
            if (!name.empty() && !isCamelBack(name) && !name.starts_with("WM_"))
                breaches.push_back({place, name});
        }
    }
    return breaches;
}

Breaches bareTextIds(const std::string &text)
{
    Breaches breaches;
    std::size_t place = text.find("37");
    for (; place != std::string::npos; place = text.find("37", place + 1)) {
        if (place > 0 && (isNameCharacter(text[place - 1]) || text[place - 1] == '.'))
            continue;
        std::size_t end = place;
        while (end < text.size() && isNameCharacter(text[end]))
            ++end;
        const std::string number = text.substr(place, end - place);
        const bool isNumber = std::all_of(number.begin(), number.end(), [](unsigned char digit) {
            return std::isdigit(digit) != 0;
        });
        if (isNumber && number.size() == 7 && (number[2] == '6' || number[2] == '7'))
            breaches.push_back({place, number});
    }
    return breaches;
}

std::set<std::string> classesDefinedIn(const std::string &code)
{
    std::set<std::string> classes;
    for (std::size_t scope = code.find("::"); scope != std::string::npos;
         scope = code.find("::", scope + 1)) {
        const std::size_t start = code.rfind('\n', scope) + 1;
        if (!isNameCharacter(code[start]))
            continue;
        const std::string name =
            classOfDefinition(code.substr(start, code.find('\n', start) - start));
        if (!name.empty())
            classes.insert(name);
    }
    return classes;
}

std::vector<std::string> cutClasses(const std::vector<SourceFile> &files)
{
    std::set<std::string> names;
    for (const SourceFile &file : files)
        names.insert(file.name);
    std::map<std::string, std::string> ownFile; ///< by class and folder
    std::vector<std::string> cut;
    for (const SourceFile &file : files) {
        const fs::path path = file.name;
        if (path.extension() != ".cpp" || isOfOnePlatform(path))
            continue;
        const std::set<std::string> classes = classesDefinedIn(file.code);
        const bool hasHeader = names.contains(fs::path(path).replace_extension(".h"));
        if (!hasHeader && path.filename() != "main.cpp" && !classes.empty())
            cut.push_back(file.name + " has no header of its name");
        for (const std::string &name : classes) {
            const auto [own, isFirst] = ownFile.try_emplace(path.parent_path() / name, file.name);
            if (!isFirst)
                cut.push_back(name + " is cut over " + own->second + " and " + file.name);
        }
    }
    return cut;
}

} // namespace norvane
