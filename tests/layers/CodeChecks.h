#pragma once

#include "layers/SourceFiles.h"

#include <set>
#include <string>
#include <vector>

namespace norvane {

/// Part of a text that breaks a rule of the house.
struct Breach
{
    std::size_t place;
    std::string found;
};

using Breaches = std::vector<Breach>;

/// What `code` declares outside of `namespace norvane`. Forward declarations, the declarations of
/// meta types, which the toolkit wants there, and what loads a library's resources may stand there;
/// so may main() with its using directives.
Breaches declarationsOutsideNamespace(const std::string &code);

/// Literals in the long form. One that includes a macro has no other.
Breaches longLiterals(const std::string &code);

/// Constants that aren't camelBack. The suite's window messages keep their names.
Breaches oddlyNamedConstants(const std::string &code);

/// Numbers that are ids of the language file's texts.
Breaches bareTextIds(const std::string &text);

/// The classes whose functions `code` defines.
std::set<std::string> classesDefinedIn(const std::string &code);

/// What one of `files` defines of a class although it isn't the class's own .cpp: the class is cut
/// over several, or the .cpp has no header of its name beside it. What belongs to one platform is
/// named after it.
std::vector<std::string> cutClasses(const std::vector<SourceFile> &files);

} // namespace norvane
