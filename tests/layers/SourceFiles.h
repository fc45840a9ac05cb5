#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace norvane {

/// A source file of the project.
struct SourceFile
{
    std::string name; ///< from the folder that it was looked for in
    std::string text;
    std::string code; ///< the text as codeOf() gives it
};

/// The .h and .cpp files below a folder of the project, ordered by name. Each folder is read once.
const std::vector<SourceFile> &sourceFiles(const std::string &folder);

/// `text` with blanks in the place of comments and of what literals hold, so that every character
/// of code keeps its place. The quotes of the literals remain.
std::string codeOf(const std::string &text);

/// Where `word` stands in `text`, and isn't a part of a longer name.
std::vector<std::size_t> placesOf(std::string_view word, const std::string &text);

/// Part of a name or a number.
bool isNameCharacter(char character);

/// The line, from 1, that the character at `place` belongs to.
std::size_t lineOf(const std::string &text, std::size_t place);

} // namespace norvane
