#include "layers/CodeChecks.h"
#include "layers/SourceFiles.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

namespace norvane {

namespace {

void expectNone(const SourceFile &file, const Breaches &breaches)
{
    for (const Breach &breach : breaches)
        ADD_FAILURE() << "src/" << file.name << ':' << lineOf(file.text, breach.place) << ": "
                      << breach.found;
}

/// The check finds one breach in the text, in its second line.
void expectBreachInSecondLine(const std::string &text,
                              const std::function<Breaches(const std::string &)> &check)
{
    const Breaches breaches = check(codeOf(text));
    ASSERT_EQ(breaches.size(), 1U) << text;
    EXPECT_EQ(lineOf(text, breaches.front().place), 2U) << text;
}

void expectNoBreach(const std::string &text,
                    const std::function<Breaches(const std::string &)> &check)
{
    for (const Breach &breach : check(codeOf(text)))
        ADD_FAILURE() << breach.found << " in " << text;
}

} // namespace

TEST(CodeStyle, everythingIsDeclaredInTheProjectsNamespace)
{
    const std::vector<SourceFile> &files = sourceFiles("src");
    ASSERT_GT(files.size(), 400U);
    for (const SourceFile &file : files) {
        EXPECT_FALSE(placesOf("namespace norvane", file.code).empty()) << file.name;
        expectNone(file, declarationsOutsideNamespace(file.code));
    }
}

TEST(CodeStyle, literalsHaveTheShortForm)
{
    for (const SourceFile &file : sourceFiles("src"))
        expectNone(file, longLiterals(file.code));
}

TEST(CodeStyle, constantsAreCamelBack)
{
    for (const SourceFile &file : sourceFiles("src"))
        expectNone(file, oddlyNamedConstants(file.code));
}

TEST(CodeStyle, textsOfTheLanguageFileAreNamed)
{
    for (const SourceFile &file : sourceFiles("src")) {
        if (file.name != "foundation/TextId.h")
            expectNone(file, bareTextIds(file.text));
    }
}

TEST(CodeStyle, theEngineKnowsNoNumberedFailure)
{
    for (const SourceFile &file : sourceFiles("src/TovekSMService"))
        EXPECT_TRUE(placesOf("NumberedFailure", file.code).empty()) << file.name;
}

TEST(CodeStyle, aClassStandsInOneFile)
{
    for (const std::string &cut : cutClasses(sourceFiles("src")))
        ADD_FAILURE() << cut;
}

TEST(CodeStyle, declarationsOutsideTheNamespaceAreFound)
{
    for (const std::string declaration :
         {"int count = 0;", "class Own\n{\n};", "namespace other {\nint count;\n}",
          "namespace {\nint count;\n}", "void function()\n{\n}", "using Names = QList<int>;",
          "int main2(int);", "class Own : public QObject {};"})
        expectBreachInSecondLine("class QLabel;\n" + declaration + "\nnamespace norvane {\n}\n",
                                 declarationsOutsideNamespace);
    expectBreachInSecondLine("namespace norvane {\n} int late;\n", declarationsOutsideNamespace);
}

TEST(CodeStyle, whatTheNamespaceCannotHoldIsFoundInOrder)
{
    for (const std::string text :
         {"#define BRACE { \\\n int x;\nclass QLabel;\nstruct udev;\nnamespace norvane {\nint "
          "x;\n}",
          "// int count;\nnamespace norvane {\nconst char *brace = \"}\"; char other = '}';\n}",
          "namespace norvane {\n}\nQ_DECLARE_METATYPE(norvane::Own)\n",
          "using namespace norvane;\nint main(int argc, char **argv)\n{\n}\n",
          "static void load()\n{\n    Q_INIT_RESOURCE(drawings);\n}\nnamespace norvane {\n}\n",
          "namespace norvane {\nint x = 20'000;\n}\n", "namespace norvane::simulator {\n}\n"})
        expectNoBreach(text, declarationsOutsideNamespace);
}

TEST(CodeStyle, longLiteralsAreFound)
{
    for (const std::string literal :
         {"QStringLiteral(\"a\")", "QLatin1String(\"a\")", "QStringLiteral(\n    u\"a\")",
          "QLatin1StringView (\"a\" \"b\")", "QByteArrayLiteral(\"a\")", "u\"a\"_qs"})
        expectBreachInSecondLine("x =\n" + literal + ";\n", longLiterals);
    for (const std::string literal :
         {"QStringLiteral(VERSION)", "QStringLiteral(\"simulator \" VERSION \"\\n\")",
          "QLatin1String(name)", "QLatin1String()", "// QStringLiteral(\"a\")", "u\"a\"_s",
          "const QLatin1String web(\"a\")", "QLatin1String(negative ? \"-\" : \"\")"})
        expectNoBreach(literal, longLiterals);
}

TEST(CodeStyle, oddlyNamedConstantsAreFound)
{
    for (const std::string constant :
         {"constexpr int Limit = 1;", "constexpr int kLimit{1};", "constexpr int s_limit = 1;",
          "inline constexpr QLatin1String Web(\"a\");", "static const QStringList WORDS{};",
          "static const std::map<Name, Other<int>> Table;", "static constexpr char LIMIT[] = \"\";",
          "constexpr std::array<char, 2> max_signs{};"})
        expectBreachInSecondLine("x;\n" + constant + "\n", oddlyNamedConstants);
    for (const std::string constant :
         {"constexpr int limit = 1;", "constexpr int kept = 1;", "constexpr Own(int Limit);",
          "constexpr explicit Own(int limit)", "if constexpr (Limit)",
          "constexpr quint32 WM_CLOSE;", "static const std::map<Name, Other<int>> table;",
          "constexpr bool operator==(Own other)",
          "const auto find = []() constexpr { return Limit; };"})
        expectNoBreach(constant, oddlyNamedConstants);
}

TEST(CodeStyle, bareTextIdsAreFound)
{
    for (const std::string number : {"GS(3760017)", "GS(3771234, 3)", "id == 3760000"})
        expectBreachInSecondLine("x;\n" + number + ";\n", bareTextIds);
    for (const std::string number :
         {"13760017", "37600171", "376001", "3750017", "x3760017", "0.3760017"})
        expectNoBreach(number, bareTextIds);
}

TEST(CodeStyle, aClassThatIsCutIsFound)
{
    const auto file = [](const std::string &name, const std::string &text) {
        return SourceFile{name, text, codeOf(text)};
    };
    const SourceFile header = file("store/Store.h", "class Store;\n");
    const SourceFile own = file("store/Store.cpp", "Store::Store()\n{\n}\n");
    EXPECT_TRUE(cutClasses({header, own}).empty());
    EXPECT_EQ(cutClasses({header, own, file("store/Sending.h", ""),
                          file("store/Sending.cpp", "bool Store::send(int part)\n{\n}\n")}),
              std::vector<std::string>{"Store is cut over store/Store.cpp and store/Sending.cpp"});
    EXPECT_EQ(cutClasses({header, file("store/Sending.cpp", "Store::~Store()\n{\n}\n")}),
              std::vector<std::string>{"store/Sending.cpp has no header of its name"});
    EXPECT_TRUE(cutClasses({file("store/Words.cpp", "int words()\n{\n    Store::open();\n}\n"),
                            file("store/platform/FilePosix.cpp", "File::File()\n{\n}\n"),
                            file("store/platform/FileWindows.h", "class File;"),
                            file("store/main.cpp", "Own::Own()\n{\n}\n")})
                    .empty());
}

} // namespace norvane
