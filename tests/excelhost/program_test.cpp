// The program: what it prints and gives for good and for bad input, with the real add-in and with faulty
// ones.
#include "excelhost/network.h"
#include "excelhost/program.h"
#include "excelhost/csv.h"
#include "excelhost/formula.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

namespace excelhost {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::string ReadAll(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    EXPECT_TRUE(file) << path;
    return {std::istreambuf_iterator<char>(file), {}};
}

const std::string kIris = std::string(EXAMPLES_FOLDER) + "/iris/";

class ProgramTest : public ::testing::Test {
  protected:
    ProgramTest() : folder_(std::filesystem::temp_directory_path() / Unique()) {
        std::filesystem::create_directory(folder_);
    }
    ~ProgramTest() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }

    static std::string Unique() {
        std::ostringstream name;
        name << "excelhost-test-" << GetCurrentProcessId();
        return name.str();
    }
    // A sheet in a file; gives the name.
    std::string File(const std::string& text, const char8_t* name = u8"sheet.csv") {
        const std::filesystem::path path = folder_ / name;
        std::ofstream(path, std::ios::binary) << text;
        const auto utf8 = path.u8string();
        return {utf8.begin(), utf8.end()};
    }
    int Run(std::vector<std::string> arguments, const std::filesystem::path& own = ADDIN_FOLDER) {
        std::ostringstream outStream;
        std::ostringstream errStream;
        const int code = RunProgram(arguments, own, outStream, errStream);
        out = outStream.str();
        err = errStream.str();
        return code;
    }
    int RunSheet(const std::string& text, std::vector<std::string> options = {}) {
        options.insert(options.begin(), {"run", File(text)});
        return Run(options);
    }

    std::filesystem::path folder_;
    std::string out;
    std::string err;
};

constexpr const char* kAsk =
    "5.1,3.5,1.4,0.2,\"=NetOutputPrediction(A1:D1,\"\"iris\"\",,,)\","
    "\"=NetOutputProbabilityOfCategory(A1:D1,\"\"iris\"\",E1,,,)=NetOutputProbabilityOfPrediction(A1:D1,"
    "\"\"iris\"\")\"\n";

TEST_F(ProgramTest, CalculatesThroughTheAddIn) {
    EXPECT_EQ(RunSheet(kAsk), kDone) << err;
    EXPECT_EQ(out, "5.1,3.5,1.4,0.2,setosa,TRUE\n");
    EXPECT_THAT(err, IsEmpty());
    EXPECT_EQ(RunSheet(kAsk, {"--workbook-name", "XLS", "--companion", "iris"}), kDone);
    EXPECT_EQ(out, "5.1,3.5,1.4,0.2,setosa,TRUE\n");
    EXPECT_EQ(RunSheet(kAsk, {"--workbook-name", "none"}), kDone) << "an error value is a value";
    EXPECT_EQ(out, "5.1,3.5,1.4,0.2,#VALUE!,#VALUE!\n");
    EXPECT_EQ(RunSheet(kAsk, {"--companion", "none"}), kBadInput);
    EXPECT_EQ(out, "5.1,3.5,1.4,0.2,#NAME?,#NAME?\n");
    EXPECT_THAT(err, HasSubstr("sheet.csv: row 1, column 5 (E1): unknown function 'NetOutputPrediction'\n"));
    EXPECT_EQ(Run({"run", File("1,=A1\n", u8"\u00fcber.csv")}), kDone) << err;
    EXPECT_EQ(out, "1,1\n");
}

TEST_F(ProgramTest, TracesEveryCallIntoExcelInOrder) {
    ASSERT_EQ(
        RunSheet("1,\"=NetOutputPrediction(A1,\"\"iris\"\",0.5)\"\n", {"--trace", "--workbook-name", "XLS"}),
        kDone);
    EXPECT_EQ(out, "1,#VALUE!\n");
    std::string calls;  // numbers and brackets left out
    std::istringstream lines(err);
    int number = 0;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("--") || line.starts_with("account")) {
            calls += line.substr(0, 20) + "\n";
            continue;
        }
        EXPECT_THAT(line, StartsWith(std::to_string(++number) + " "));
        line.erase(0, line.find(' ') + 1);
        if (line != "xlEnableXLMsgs()" && line != "xlDisableXLMsgs()") calls += line + "\n";
    }
    EXPECT_THAT(
        calls,
        AllOf(StartsWith("-- Excel loads the a\n"
                         "-- the companion wor\n"
                         "xlfRegister(\"kestrolumen.xll\", \"NetOutputPrediction\", \"QUQQUU\", "
                         "\"NetOutputPrediction\") -> 1001\n"
                         "xlFree(1001)\n"),
              HasSubstr("-- the sheet is calc\n"
                        "xlfError(int 0) -> TRUE\n"
                        "xlFree(TRUE)\n"
                        "xlUDF(\"=Kestrolumen.XLA!NetOutputPredictionVBA\", A1, \"iris\", 0.5, (missing), "
                        "(missing)) failed with code 32: no workbook 'Kestrolumen.XLA' is open\n"
                        "xlUDF(\"=Kestrolumen.XLS!NetOutputPredictionVBA\", A1, \"iris\", 0.5, (missing), "
                        "(missing)) -> #VALUE!\n"
                        "xlFree(#VALUE!)\n"
                        "xlfError(int 1) -> TRUE\n"
                        "xlFree(TRUE)\n"
                        "-- the companion wor\n"
                        "-- Excel closes the \n"
                        "xlfUnregister(1001) -> TRUE\n"),
              testing::EndsWith("xlFree(#VALUE!)\naccount: lent 5, len\n")));
    EXPECT_THAT(err, HasSubstr("leaked 0, freed twice 0, foreign 0\n"));
}

// Each probability of the demo's sheet against the network asked without an add-in, and the whole of it
// against the committed result, which so holds in every build.
TEST_F(ProgramTest, TheIrisSheetGivesTheSameNumbersEverywhere) {
    ASSERT_EQ(Run({"run", kIris + "sheet.csv"}), kDone) << err;
    EXPECT_EQ(out, ReadAll(kIris + "calculated.csv"));
    const CsvTable table = ParseCsv(out);
    const CsvTable measured = ParseCsv(ReadAll(kIris + "iris.csv"));
    ASSERT_EQ(table.size(), 154U);
    int right = 0;
    for (std::size_t row = 1; row <= 150; ++row) {
        std::vector<double> inputs(4);
        for (std::size_t i = 0; i < 4; ++i) {
            ASSERT_TRUE(ReadNumber(measured[row][i], inputs[i]));
            EXPECT_EQ(table[row][i], NumberText(inputs[i]));
        }
        const auto probabilities = Probabilities(kIrisNetwork, inputs);
        const auto likeliest =
            std::max_element(probabilities.begin(), probabilities.end()) - probabilities.begin();
        EXPECT_EQ(table[row][6], kIrisNetwork.categories[static_cast<std::size_t>(likeliest)]) << row;
        EXPECT_EQ(table[row][7], NumberText(probabilities[static_cast<std::size_t>(likeliest)])) << row;
        for (std::size_t k = 0; k < 3; ++k) EXPECT_EQ(table[row][8 + k], NumberText(probabilities[k])) << row;
        right += table[row][6] == measured[row][4] ? 1 : 0;
    }
    EXPECT_EQ(table[153][11], NumberText(right / 150.0));
    EXPECT_GE(right, 143) << "a network that has learned something";
}

TEST_F(ProgramTest, NamesTheFileAndTheCellOfEveryFault) {
    const std::string at = "sheet.csv: row ";
    const std::pair<const char*, std::string> sheets[] = {
        {"1,2\n3\n", at + "2, column 2 (B2): the row has 1 fields"},
        {"1\n=1+\n", at + "2, column 1 (A2): bad formula =1+: at character 4"},
        {"=A2\n=A1\n", at + "2, column 1 (A2): circular reference: A1 -> A2 -> A1"},
    };
    for (const auto& [text, message] : sheets) {
        EXPECT_EQ(RunSheet(text), kBadInput) << text;
        EXPECT_THAT(err, HasSubstr(message)) << text;
        EXPECT_THAT(out, IsEmpty()) << text;
    }
    EXPECT_EQ(RunSheet("=Foo()\n7\n"), kBadInput);
    EXPECT_THAT(err, HasSubstr(at + "1, column 1 (A1): unknown function 'Foo'"));
    EXPECT_EQ(out, "#NAME?\n7\n") << "the rest is calculated";
}

TEST_F(ProgramTest, RefusesABadCommandLine) {
    const std::pair<std::vector<std::string>, const char*> lines[] = {
        {{}, "a command is missing"},
        {{"run"}, "the name of a sheet is missing"},
        {{"run", "a", "b"}, "what is 'b'?"},
        {{"run", "a", "--tracer"}, "unknown option '--tracer'"},
        {{"run", "a", "--companion", "rosa"}, "--companion takes one of iris, none, not 'rosa'"},
        {{"run", "a", "--workbook-name", "xlsx"}, "--workbook-name takes one of XLA, XLS, none"},
    };
    for (const auto& [arguments, message] : lines) {
        EXPECT_EQ(Run(arguments), kBadUsage) << message;
        EXPECT_THAT(err, AllOf(StartsWith("excelhost: "), HasSubstr(message), HasSubstr("--help")));
        EXPECT_THAT(out, IsEmpty());
    }
    for (const std::vector<std::string>& help : {std::vector<std::string>{"--help"}, {"run", "x", "-h"}}) {
        EXPECT_EQ(Run(help), kDone);
        EXPECT_THAT(out, HasSubstr("Usage: excelhost run SHEET.csv"));
    }
}

TEST_F(ProgramTest, TellsWhichFileIsNotThere) {
    EXPECT_EQ(Run({"run", "no such.csv"}), kBadInput);
    EXPECT_EQ(err, "excelhost: no such.csv: can't be opened\n");
    EXPECT_EQ(Run({"run", folder_.string()}), kBadInput);
    EXPECT_THAT(err, HasSubstr("is a folder"));
    const std::string sheet = File("1\n");
    EXPECT_EQ(Run({"run", sheet}, folder_), kBadInput);
    EXPECT_THAT(err, AllOf(HasSubstr("there is no add-in"), HasSubstr("kestrolumen.xll")));
    EXPECT_EQ(Run({"run", sheet, "--addin", sheet}), kBadInput);
    EXPECT_THAT(err, HasSubstr("sheet.csv' can't be loaded"));
}

TEST_F(ProgramTest, FindsOutFaultyAddIns) {
    const struct {
        const char* addIn;
        int code;
        const char* message;
    } cases[] = {
        {BAD_ADDIN_1, kBadAccount, "leaked 1, freed twice 0"},
        {BAD_ADDIN_2, kBadAccount, "leaked 0, freed twice 1"},
        {BAD_ADDIN_3, kBadInput, "refuses to open"},
#ifdef BAD_ADDIN_4  // throws, where an exception can leave a module
        {BAD_ADDIN_4, kBadInput, "failed in the workbook's handshake"},
#endif
    };
    const std::string ask = "5.1,3.5,1.4,0.2,\"=NetOutputPrediction(A1:D1,\"\"iris\"\")\"\n";
    for (const auto& c : cases) {
        EXPECT_EQ(RunSheet(ask, {"--addin", c.addIn}), c.code) << c.addIn;
        EXPECT_THAT(err, HasSubstr(c.message)) << c.addIn;
    }
    EXPECT_EQ(RunSheet("1\n", {"--addin", BAD_ADDIN_1}), kDone) << "nothing was asked of it: " << err;
}

}  // namespace
}  // namespace excelhost
