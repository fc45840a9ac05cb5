#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
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
    {"foundation", {"common"}},
    {"NorvaneSMS", {"common", "contract", "foundation"}},
    {"NorvaneSheetReader", {"common", "contract"}},
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
    {"NorvaneSheetReader", {{""}}},
    {"TovekSMService",
     {{"platform", "time"},
      {"log"},
      {"store", "modem/codec"},
      {"modem/at"},
      {"modem/device"},
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

std::vector<Include> includesOfSources()
{
    static const std::regex directive(R"re(^\s*#\s*include\s*([<"])([^>"]+)[>"])re");
    const fs::path root = fs::path(NORVANE_SOURCE_DIR) / "src";
    std::vector<Include> found;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(root)) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".h" && extension != ".cpp")
            continue;
        std::ifstream source(entry.path());
        std::string line;
        std::smatch match;
        while (std::getline(source, line)) {
            if (std::regex_search(line, match, directive))
                found.push_back({fs::relative(entry.path(), root).generic_string(), match[2],
                                 match[1] == "\""});
        }
    }
    return found;
}

bool isGenerated(const std::string &header)
{
    return header == "SMSManagerBusInterface.h" || header == "smsmanagerbusadaptor.h";
}

} // namespace

TEST(Layers, everySourceFileStandsInAFolderOfTheTable)
{
    const std::vector<Include> includes = includesOfSources();
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
    static const std::regex widget(
        R"(^(Q(Application|Widget|Dialog|MessageBox|Label|PushButton|LineEdit|PlainTextEdit|TableView|DateEdit|TimeEdit|ComboBox|FileDialog|CheckBox|RadioButton|HeaderView|Style.*)|QtWidgets.*)$)");
    const std::set<std::string> withWidgets = {"foundation/ui", "NorvaneSMS/console",
                                               "NorvaneSMS/app", "NorvaneSMS/device",
                                               "NorvaneSMS/import"};
    for (const Include &include : includesOfSources()) {
        if (withWidgets.contains(fs::path(include.file).parent_path().generic_string()))
            continue;
        EXPECT_FALSE(std::regex_match(include.includes, widget))
            << include.file << " includes <" << include.includes << '>';
    }
}

TEST(Layers, platformHeadersOfTheSystemStandInThePlatformFoldersAlone)
{
    static const std::regex system(
        R"(^(unistd\.h|fcntl\.h|termios\.h|dirent\.h|signal\.h|csignal|pty\.h|poll\.h|sys/.*|xcb/.*)$)");
    for (const Include &include : includesOfSources()) {
        if (folderOf(include.file) == "platform" || programOf(include.file) == "gsm-simulator")
            continue;
        EXPECT_FALSE(std::regex_match(include.includes, system))
            << include.file << " includes <" << include.includes << '>';
    }
}

namespace {

/// Lines of the files below `folder` that `pattern` is found in, as "file:line: text".
std::vector<std::string> linesWith(const fs::path &folder, const std::regex &pattern)
{
    std::vector<std::string> found;
    for (const fs::directory_entry &entry : fs::recursive_directory_iterator(folder)) {
        const std::string extension = entry.path().extension().string();
        if (extension != ".h" && extension != ".cpp")
            continue;
        std::ifstream source(entry.path());
        std::string line;
        for (int number = 1; std::getline(source, line); ++number)
            if (std::regex_search(line, pattern))
                found.push_back(entry.path().generic_string() + ':' + std::to_string(number) +
                                ": " + line);
    }
    return found;
}

/// What measures the time of the machine, or lets it pass.
const std::regex &timeOfMachine()
{
    static const std::regex pattern(
        R"(\b(QElapsedTimer|QDeadlineTimer|steady_clock|high_resolution_clock|nsecsElapsed)\b)"
        R"(|\bstd::clock\(|\bsleep_(for|until)\(|\bQThread::[mu]?sleep\(|\bq(Wait|WaitFor|Sleep)\()"
        R"(|::u?sleep\()");
    return pattern;
}

} // namespace

/// How long something takes shows a benchmark; what waits is turned (support/TurnedTime), or
/// awaited (support/WaitUntil).
TEST(Layers, noTestMeasuresTheTimeOfTheMachineOrSleeps)
{
    // The harness plays real programs against each other, and lets the line take its time; the one
    // deadline of the others is that of WaitUntil.
    static const std::set<std::string> exempt = {"harness", "layers", "support/WaitUntil.cpp",
                                                 "gsm-simulator/RunningSimulator.cpp"};
    const fs::path tests = fs::path(NORVANE_SOURCE_DIR) / "tests";
    for (const std::string &line : linesWith(tests, timeOfMachine())) {
        const std::string file = fs::relative(line.substr(0, line.find(':')), tests);
        EXPECT_TRUE(exempt.contains(file) || exempt.contains(file.substr(0, file.find('/'))))
            << line;
    }
}

TEST(Layers, whatWaitsInTheEngineTakesItsTimeFromTheSourceThatIsGiven)
{
    static const std::regex ownTime(
        R"(\b(QTimer|QElapsedTimer|QDeadlineTimer|steady_clock)\b|\bsleep_(for|until)\()");
    // The lock is waited for before there is an event loop.
    static const std::set<std::string> exempt = {"time/TimeSource.cpp", "host/EngineHost.cpp"};
    const fs::path engine = fs::path(NORVANE_SOURCE_DIR) / "src" / "TovekSMService";
    for (const std::string &line : linesWith(engine, ownTime)) {
        const std::string file = fs::relative(line.substr(0, line.find(':')), engine);
        EXPECT_TRUE(exempt.contains(file)) << line;
    }
}

} // namespace norvane
