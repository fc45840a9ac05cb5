#include "layers/SourceFiles.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

namespace norvane {

namespace {

namespace fs = std::filesystem;

/// The place behind the literal whose quote stands at `quote`.
std::size_t endOfLiteral(const std::string &text, std::size_t quote)
{
    std::size_t place = quote + 1;
    while (place < text.size() && text[place] != text[quote])
        place += text[place] == '\\' ? 2 : 1;
    return std::min(place + 1, text.size());
}

std::size_t endOfRawLiteral(const std::string &text, std::size_t quote)
{
    const std::size_t bracket = text.find('(', quote);
    const std::string end = ')' + text.substr(quote + 1, bracket - quote - 1) + '"';
    return std::min(text.find(end, bracket), text.size() - end.size()) + end.size();
}

/// True for the mark between the digits of a number.
bool isDigitSeparator(const std::string &text, std::size_t place)
{
    std::size_t start = place;
    while (start > 0 && (isNameCharacter(text[start - 1]) || text[start - 1] == '\''))
        --start;
    return start < place && std::isdigit(static_cast<unsigned char>(text[start])) != 0;
}

void blank(std::string &text, std::size_t from, std::size_t to)
{
    for (std::size_t place = from; place < to; ++place)
        if (text[place] != '\n')
            text[place] = ' ';
}

std::vector<SourceFile> readFolder(const fs::path &folder)
{
    std::vector<SourceFile> files;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(folder)) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".h" && extension != ".cpp")
            continue;
        std::ifstream source(entry.path(), std::ios::binary);
        std::string text{std::istreambuf_iterator<char>(source), {}};
        std::string code = codeOf(text);
        files.push_back({entry.path().lexically_relative(folder).generic_string(), std::move(text),
                         std::move(code)});
    }
    std::sort(files.begin(), files.end(),
              [](const SourceFile &one, const SourceFile &other) { return one.name < other.name; });
    return files;
}

} // namespace

bool isNameCharacter(char character)
{
    return std::isalnum(static_cast<unsigned char>(character)) != 0 || character == '_';
}

const std::vector<SourceFile> &sourceFiles(const std::string &folder)
{
    static std::map<std::string, std::vector<SourceFile>> read;
    const auto [files, isNew] = read.try_emplace(folder);
    if (isNew)
        files->second = readFolder(fs::path(NORVANE_SOURCE_DIR) / folder);
    return files->second;
}

std::string codeOf(const std::string &text)
{
    std::string code = text;
    std::size_t place = text.find_first_of("/\"'");
    while (place != std::string::npos) {
        std::size_t end = place + 1;
        if (text[place] != '/') {
            if (text[place] == '"' && place > 0 && text[place - 1] == 'R')
                end = endOfRawLiteral(text, place);
            else if (text[place] == '"' || !isDigitSeparator(text, place))
                end = endOfLiteral(text, place);
            if (end > place + 1)
                blank(code, place + 1, end - 1);
        } else if (text.compare(place, 2, "//") == 0) {
            end = std::min(text.find('\n', place), text.size());
            blank(code, place, end);
        } else if (text.compare(place, 2, "/*") == 0) {
            end = std::min(text.find("*/", place + 2), text.size() - 2) + 2;
            blank(code, place, end);
        }
        place = text.find_first_of("/\"'", end);
    }
    return code;
}

std::vector<std::size_t> placesOf(std::string_view word, const std::string &text)
{
    std::vector<std::size_t> places;
    std::size_t place = text.find(word);
    for (; place != std::string::npos; place = text.find(word, place + 1)) {
        const std::size_t end = place + word.size();
        const bool begins =
            place == 0 || !isNameCharacter(word.front()) || !isNameCharacter(text[place - 1]);
        const bool ends =
            end == text.size() || !isNameCharacter(word.back()) || !isNameCharacter(text[end]);
        if (begins && ends)
            places.push_back(place);
    }
    return places;
}

std::size_t lineOf(const std::string &text, std::size_t place)
{
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(place);
    return static_cast<std::size_t>(std::count(text.begin(), end, '\n')) + 1;
}

} // namespace norvane
