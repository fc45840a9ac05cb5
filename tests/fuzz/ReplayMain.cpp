#include "fuzz/FuzzTarget.h"

#include <QDir>
#include <QFile>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <random>
#include <string>
#include <vector>

namespace norvane {

// Stands in for libFuzzer: gives a target every file of a corpus, and after that mutations of them,
// the same ones for the same seed.
//
//     fuzz_name [-mutations=N] [-seed=N] [-longest=BYTES] FILE_OR_FOLDER...
//
// An input that breaks the target is kept as "broken-input" in the working folder.

namespace {

constexpr double maxSeconds = 20;      // of processor time that one input may take
constexpr long maxKibibytes = 1 << 20; // of memory that the process may take

// Of use in a signal handler.
const char *g_input = nullptr;
std::size_t g_inputSize = 0;

struct Options
{
    long mutations = 0;
    unsigned seed = 1;
    std::size_t max = 4096;
    QStringList paths;
};

void keepInput()
{
    const int file = open("broken-input", O_WRONLY | O_CREAT | O_TRUNC, 0600);
    const bool kept =
        file >= 0 && write(file, g_input, g_inputSize) == static_cast<ssize_t>(g_inputSize);
    static constexpr char told[] = "the input is kept in broken-input\n";
    static constexpr char lost[] = "the input could not be kept\n";
    (void)!(kept ? write(STDERR_FILENO, told, sizeof told - 1)
                 : write(STDERR_FILENO, lost, sizeof lost - 1));
}

void onCrash(int)
{
    keepInput();
    _exit(1);
}

double processorSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

Options readOptions(int argc, char **argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const auto number = [&argument](const char *name) {
            const std::string start = name;
            return argument.starts_with(start)
                       ? std::strtol(argument.c_str() + start.size(), nullptr, 10)
                       : -1;
        };
        if (const long mutations = number("-mutations="); mutations >= 0)
            options.mutations = mutations;
        else if (const long seed = number("-seed="); seed >= 0)
            options.seed = static_cast<unsigned>(seed);
        else if (const long max = number("-longest="); max >= 0)
            options.max = static_cast<std::size_t>(max);
        else
            options.paths.append(QFile::decodeName(argv[i]));
    }
    return options;
}

std::vector<std::string> readCorpus(const QStringList &paths)
{
    QStringList names;
    for (const QString &path : paths) {
        const QDir folder(path);
        if (!folder.exists())
            names.append(path);
        for (const QString &name : folder.entryList(QDir::Files, QDir::Name))
            names.append(folder.filePath(name));
    }
    std::vector<std::string> corpus;
    for (const QString &name : names) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            std::fprintf(stderr, "%s can't be read\n", qPrintable(name));
            std::exit(2);
        }
        corpus.push_back(file.readAll().toStdString());
    }
    return corpus;
}

/// Changes an input here and there, now and then with a piece of another one.
class Mutator
{
public:
    Mutator(const std::vector<std::string> &corpus, const Options &options)
        : m_corpus(corpus), m_longest(options.max), m_random(options.seed)
    {}

    std::string next()
    {
        std::string input = anyOf(m_corpus);
        for (unsigned changes = 1 + below(6); changes > 0; --changes)
            change(input);
        input.resize(std::min(input.size(), m_longest));
        return input;
    }

private:
    unsigned below(std::size_t limit) { return static_cast<unsigned>(m_random() % limit); }
    const std::string &anyOf(const std::vector<std::string> &list)
    {
        return list[below(list.size())];
    }

    void change(std::string &input)
    {
        static const std::string marks("\0\x01\x7F\x80\xFF\r\n\x1A\x1B \",:;=[]<>&%@0", 23);
        const std::size_t at = below(input.size() + 1);
        const std::size_t length = std::min<std::size_t>(1 + below(16), input.size() - at);
        switch (below(7)) {
        case 0:
            if (at < input.size())
                input[at] = static_cast<char>(input[at] ^ (1 << below(8)));
            break;
        case 1:
            if (at < input.size())
                input[at] = static_cast<char>(below(256));
            break;
        case 2:
            input.insert(at, 1, marks[below(marks.size())]);
            break;
        case 3:
            input.erase(at, length);
            break;
        case 4:
            input.insert(at, input.substr(at, length));
            break;
        case 5:
            input.insert(at, 1 + below(300), static_cast<char>(below(256)));
            break;
        default: {
            const std::string &other = anyOf(m_corpus);
            const std::size_t from = below(other.size() + 1);
            input.insert(at, other.substr(from, 1 + below(64)));
        }
        }
    }

    const std::vector<std::string> &m_corpus;
    std::size_t m_longest;
    std::mt19937 m_random;
};

bool runOne(const std::string &input)
{
    g_input = input.data();
    g_inputSize = input.size();
    const double start = processorSeconds();
    LLVMFuzzerTestOneInput(reinterpret_cast<const quint8 *>(input.data()), input.size());
    if (processorSeconds() - start > maxSeconds) {
        std::fprintf(stderr, "an input took more than %.0f s\n", maxSeconds);
        keepInput();
        return false;
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    if (usage.ru_maxrss > maxKibibytes) {
        std::fprintf(stderr, "an input took the memory to %ld KiB\n", usage.ru_maxrss);
        keepInput();
        return false;
    }
    return true;
}

} // namespace

} // namespace norvane

using namespace norvane;

int main(int argc, char **argv)
{
    LLVMFuzzerInitialize(&argc, &argv);
    for (const int signal : {SIGABRT, SIGSEGV, SIGFPE, SIGILL, SIGBUS})
        std::signal(signal, onCrash);

    const Options options = readOptions(argc, argv);
    const std::vector<std::string> corpus = readCorpus(options.paths);
    if (corpus.empty()) {
        std::fprintf(stderr, "there is no corpus\n");
        return 2;
    }
    long executions = 1;
    bool good = runOne(std::string());
    for (const std::string &input : corpus) {
        good = good && runOne(input);
        ++executions;
    }
    Mutator mutator(corpus, options);
    for (long i = 0; good && i < options.mutations; ++i, ++executions)
        good = runOne(mutator.next());
    if (good)
        std::printf("%ld inputs\n", executions);
    return good ? 0 : 1;
}
