#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

/// What the files of a folder may include besides those of the folder itself. The longest folder
/// that holds a file is its own.
const std::map<std::string, std::set<std::string>> &allowed()
{
    const std::set<std::string> level0 = {"foundation", "foundation/platform"};
    const std::set<std::string> contract = {"foundation", "foundation/platform", "engine/contract"};
    const std::set<std::string> belowConsole = {"foundation",      "foundation/platform",
                                                "foundation/ui",   "engine",
                                                "engine/contract", "app/mode",
                                                "queue",           "import",
                                                "import/readers",  "device"};
    std::set<std::string> belowApp = belowConsole;
    belowApp.insert("console");
    std::set<std::string> serviceParts = contract;
    for (const char *part : {"service/modem", "service/store", "service/dispatch", "service/ipc",
                             "service/platform", "service/time"})
        serviceParts.insert(part);

    static const std::map<std::string, std::set<std::string>> table = {
        {"foundation", level0},
        {"foundation/platform", level0},
        {"foundation/ui", level0},
        {"engine/contract", level0},
        {"engine", contract},
        {"app/mode", level0},
        {"queue", {"foundation", "foundation/platform", "engine/contract", "app/mode"}},
        {"import/readers", level0},
        {"import/sheets", {"foundation", "foundation/platform", "import/readers"}},
        {"import", {"foundation", "foundation/platform", "foundation/ui", "import/readers"}},
        {"device",
         {"foundation", "foundation/platform", "foundation/ui", "engine", "engine/contract",
          "app/mode"}},
        {"console", belowConsole},
        {"app", belowApp},
        {"service", serviceParts},
        {"service/platform", contract},
        {"service/time", {}},
        {"service/modem", {"foundation", "engine/contract", "service/platform", "service/time"}},
        {"service/store",
         {"foundation", "engine/contract", "service/modem", "service/platform", "service/time"}},
        {"service/dispatch",
         {"foundation", "foundation/platform", "engine/contract", "service/modem", "service/store",
          "service/platform", "service/time"}},
        {"service/ipc", serviceParts},
        {"simulator", {}},
    };
    return table;
}

std::string folderOf(const std::string &file)
{
    std::string folder = fs::path(file).parent_path().generic_string();
    while (!folder.empty() && !allowed().contains(folder))
        folder = fs::path(folder).parent_path().generic_string();
    return folder;
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
        EXPECT_FALSE(folderOf(include.file).empty()) << include.file;
}

TEST(Layers, aFolderIncludesOnlyWhatStandsLower)
{
    for (const Include &include : includesOfSources()) {
        if (!include.quoted || isGenerated(include.includes))
            continue;
        const std::string from = folderOf(include.file);
        const std::string to = folderOf(include.includes);
        EXPECT_TRUE(from == to || allowed().at(from).contains(to))
            << include.file << " includes \"" << include.includes << '"';
    }
}

TEST(Layers, whatStandsBelowTheConsoleIncludesNoWidgetHeader)
{
    static const std::regex widget(
        R"(^(Q(Application|Widget|Dialog|MessageBox|Label|PushButton|LineEdit|PlainTextEdit|TableView|DateEdit|TimeEdit|ComboBox|FileDialog|CheckBox|RadioButton|HeaderView|Style.*)|QtWidgets.*)$)");
    const std::set<std::string> withWidgets = {"foundation/ui", "console", "app", "device",
                                               "import"};
    for (const Include &include : includesOfSources()) {
        if (withWidgets.contains(folderOf(include.file)))
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
        const std::string folder = folderOf(include.file);
        if (folder == "foundation/platform" || folder == "service/platform" ||
            folder == "simulator")
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
                                                 "simulator/RunningSimulator.cpp"};
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
    static const std::set<std::string> exempt = {"time/TimeSource.cpp", "ipc/EngineHost.cpp"};
    const fs::path service = fs::path(NORVANE_SOURCE_DIR) / "src" / "service";
    for (const std::string &line : linesWith(service, ownTime)) {
        const std::string file = fs::relative(line.substr(0, line.find(':')), service);
        EXPECT_TRUE(exempt.contains(file)) << line;
    }
}
