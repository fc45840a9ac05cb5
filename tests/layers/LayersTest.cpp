#include "layers/SourceFiles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace norvane {

namespace fs = std::filesystem;

namespace {

using Folders = std::vector<std::string>;

/// What a program, or what programs share, may include besides itself.
const std::map<std::string, std::set<std::string>> mayInclude = {
    {"common", {}},
    {"contract", {"common"}},
    {"foundation", {"common", "contract"}},
    {"NorvaneSMS", {"common", "contract", "foundation"}},
    {"NorvaneHistory", {"common", "contract", "foundation"}},
    {"NorvaneSheetReader", {"common"}},
    {"TovekSMService", {"common", "contract"}},
    {"gsm-simulator", {}},
};

/// The folders of a program, the lowest level first; "" is the program's own. An arrow goes to a
/// lower level, or stays in its folder.
const std::map<std::string, std::vector<Folders>> levels = {
    {"common", {{"platform"}, {""}}},
    {"contract", {{""}}},
    {"foundation", {{"platform"}, {""}, {"ui"}}},
    {"NorvaneSMS",
     {{"platform"},
      {"engine", "app/mode"},
      {"queue", "import/readers"},
      {"import", "device"},
      {"console"},
      {"app"}}},
    {"NorvaneHistory", {{""}}},
    {"NorvaneSheetReader", {{""}}},
    {"TovekSMService",
     {{"platform", "time"},
      {"log"},
      {"store", "modem/codec"},
      {"modem/at"},
      {"modem/manager"},
      {"modem/device", "history", "reports"},
      {"dispatch"},
      {"bus"},
      {"admin"},
      {"host"},
      {""}}},
    {"gsm-simulator", {{""}}},
};

std::string programOf(const std::string &file)
{
    return file.substr(0, file.find('/'));
}

/// The folder below that of the program.
std::string folderOf(const std::string &file)
{
    const std::string folder = fs::path(file).parent_path().generic_string();
    const std::size_t slash = folder.find('/');
    return slash == std::string::npos ? std::string() : folder.substr(slash + 1);
}

/// -1 for a folder that isn't known.
int levelOf(const std::string &file)
{
    const auto program = levels.find(programOf(file));
    if (program == levels.end())
        return -1;
    for (std::size_t level = 0; level < program->second.size(); ++level) {
        const Folders &folders = program->second[level];
        if (std::find(folders.begin(), folders.end(), folderOf(file)) != folders.end())
            return static_cast<int>(level);
    }
    return -1;
}

/// The store knows no modem, and no modem the store.
bool isStoreAndModem(const std::string &one, const std::string &other)
{
    return programOf(one) == "TovekSMService" && folderOf(one) == "store" &&
           folderOf(other).starts_with("modem/");
}

bool isAllowed(const std::string &from, const std::string &to)
{
    if (programOf(from) != programOf(to))
        return mayInclude.at(programOf(from)).contains(programOf(to));
    if (isStoreAndModem(from, to) || isStoreAndModem(to, from))
        return false;
    return folderOf(from) == folderOf(to) || levelOf(from) > levelOf(to);
}

struct Include
{
    std::string file;
    std::string includes;
    bool quoted;
};

/// What an include directive names, if `line` is one.
std::optional<Include> includeOf(const std::string &file, const std::string &line)
{
    const std::size_t word = line.find("include");
    const std::size_t open = line.find_first_of("<\"");
    if (word > open || open == std::string::npos)
        return std::nullopt;
    const std::size_t close = line.find(line[open] == '"' ? '"' : '>', open + 1);
    return Include{file, line.substr(open + 1, close - open - 1), line[open] == '"'};
}

std::vector<Include> findIncludes()
{
    std::vector<Include> found;
    for (const SourceFile &file : sourceFiles("src")) {
        std::size_t sign = file.code.find('#');
        for (; sign != std::string::npos; sign = file.code.find('#', sign + 1)) {
            const std::size_t end = std::min(file.text.find('\n', sign), file.text.size());
            if (const auto include = includeOf(file.name, file.text.substr(sign, end - sign)))
                found.push_back(*include);
        }
    }
    return found;
}

const std::vector<Include> &includesOfSources()
{
    static const std::vector<Include> found = findIncludes();
    return found;
}

bool isGenerated(const std::string &header)
{
    return header == "SMSManagerBusInterface.h" || header == "smsmanagerbusadaptor.h" ||
           header == "messagesbusadaptor.h" || header == "MessagesBusInterface.h";
}

} // namespace

TEST(Layers, everySourceFileStandsInAFolderOfTheTable)
{
    const std::vector<Include> &includes = includesOfSources();
    ASSERT_GT(includes.size(), 100U);
    for (const Include &include : includes)
        EXPECT_GE(levelOf(include.file), 0) << include.file;
}

TEST(Layers, everyFolderOfTheTableIsThere)
{
    for (const auto &[program, folders] : levels)
        for (const Folders &level : folders)
            for (const std::string &folder : level)
                EXPECT_TRUE(
                    fs::is_directory(fs::path(NORVANE_SOURCE_DIR) / "src" / program / folder))
                    << program << '/' << folder;
}

TEST(Layers, aProgramIncludesItselfAndWhatIsSharedAndOnlyWhatStandsLower)
{
    for (const Include &include : includesOfSources()) {
        if (!include.quoted || isGenerated(include.includes))
            continue;
        EXPECT_TRUE(isAllowed(include.file, include.includes))
            << include.file << " includes \"" << include.includes << '"';
    }
}

TEST(Layers, whatStandsBelowTheConsoleIncludesNoWidgetHeader)
{
    static const std::set<std::string> widgets = {
        "QApplication", "QWidget",    "QDialog",        "QMessageBox", "QLabel",    "QPushButton",
        "QLineEdit",    "QTableView", "QPlainTextEdit", "QDateEdit",   "QTimeEdit", "QComboBox",
        "QFileDialog",  "QCheckBox",  "QRadioButton",   "QHeaderView"};
    const std::set<std::string> withWidgets = {"foundation/ui",     "NorvaneSMS/console",
                                               "NorvaneSMS/app",    "NorvaneSMS/device",
                                               "NorvaneSMS/import", "NorvaneHistory"};
    for (const Include &include : includesOfSources()) {
        if (withWidgets.contains(fs::path(include.file).parent_path().generic_string()))
            continue;
        EXPECT_FALSE(widgets.contains(include.includes) || include.includes.starts_with("QStyle") ||
                     include.includes.starts_with("QtWidgets"))
            << include.file << " includes <" << include.includes << '>';
    }
}

TEST(Layers, platformHeadersOfTheSystemStandInThePlatformFoldersAlone)
{
    static const std::set<std::string> headers = {"unistd.h", "fcntl.h", "termios.h", "dirent.h",
                                                  "signal.h", "csignal", "pty.h",     "poll.h"};
    for (const Include &include : includesOfSources()) {
        if (folderOf(include.file) == "platform" || programOf(include.file) == "gsm-simulator")
            continue;
        EXPECT_FALSE(headers.contains(include.includes) || include.includes.starts_with("sys/") ||
                     include.includes.starts_with("xcb/"))
            << include.file << " includes <" << include.includes << '>';
    }
}

namespace {

/// Fails for every place in the files below `folder` where one of `words` stands, except where
/// `isExempt` holds for the file's name.
template <typename Exempt>
void expectNoneOf(const std::vector<std::string> &words, const std::string &folder,
                  const Exempt &isExempt)
{
    for (const SourceFile &file : sourceFiles(folder)) {
        if (isExempt(file.name))
            continue;
        for (const std::string &word : words)
            for (const std::size_t place : placesOf(word, file.text))
                ADD_FAILURE() << folder << '/' << file.name << ':' << lineOf(file.text, place)
                              << ": " << word;
    }
}

} // namespace

/// How long something takes shows a benchmark; what waits is turned (support/TurnedTime), or
/// awaited (support/WaitUntil).
TEST(Layers, noTestMeasuresTheTimeOfTheMachineOrSleeps)
{
    // The harness plays real programs against each other, and lets the line take its time, as the
    // database's proxy does; the one deadline of the others is that of WaitUntil.
    static const std::set<std::string> exempt = {"harness", "layers", "support/WaitUntil.cpp",
                                                 "support/DelayedMessages.h",
                                                 "gsm-simulator/RunningSimulator.cpp"};
    static const std::vector<std::string> words = {
        "QElapsedTimer", "QDeadlineTimer", "steady_clock", "high_resolution_clock",
        "nsecsElapsed",  "std::clock(",    "sleep_for(",   "sleep_until(",
        "::sleep(",      "::msleep(",      "::usleep(",    "qWait(",
        "qWaitFor(",     "qSleep("};
    expectNoneOf(words, "tests", [](const std::string &file) {
        return exempt.contains(file) || exempt.contains(file.substr(0, file.find('/')));
    });
}

TEST(Layers, whatWaitsInTheEngineTakesItsTimeFromTheSourceThatIsGiven)
{
    // The lock is waited for before there is an event loop.
    static const std::set<std::string> exempt = {"time/TimeSource.cpp", "host/EngineHost.cpp"};
    expectNoneOf(
        {"QTimer", "QElapsedTimer", "QDeadlineTimer", "steady_clock", "sleep_for(", "sleep_until("},
        "src/TovekSMService", [](const std::string &file) { return exempt.contains(file); });
}

} // namespace norvane
