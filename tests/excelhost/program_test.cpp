// The program: what it prints and gives for good and for bad input, with the real add-in and with faulty
// ones.
#include "programtest.h"

#include <gmock/gmock.h>

namespace excelhost {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

constexpr const char* kAsk =
    "5.1,3.5,1.4,0.2,\"=NetOutputPrediction(A1:D1,\"\"iris\"\",,,)\","
    "\"=NetOutputProbabilityOfCategory(A1:D1,\"\"iris\"\",E1,,,)=NetOutputProbabilityOfPrediction(A1:D1,"
    "\"\"iris\"\")\"\n";

TEST_F(ProgramTest, CalculatesThroughTheAddIn) {
    EXPECT_EQ(RunSheet(kAsk), kDone) << err;
    EXPECT_EQ(out, "5.1,3.5,1.4,0.2,setosa,TRUE\n");
    EXPECT_THAT(err, IsEmpty());
    EXPECT_EQ(RunSheet(kAsk, {"--workbook-name", "none"}), kDone) << "an error value is a value";
    EXPECT_EQ(out, "5.1,3.5,1.4,0.2,#VALUE!,#VALUE!\n");
    EXPECT_EQ(RunSheet(kAsk, {"--companion=none"}), kBadInput);
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
    std::string calls;  // without their numbers and the switches of messages around each
    std::istringstream lines(err);
    for (std::string line; std::getline(lines, line);) {
        line.erase(0, line.find(' ') + 1);
        if (line.starts_with("xl") && !line.ends_with("Msgs()")) calls += line + "\n";
    }
    EXPECT_THAT(calls, HasSubstr("xlfError(int 0) -> TRUE\n"
                                 "xlFree(TRUE)\n"
                                 "xlUDF(\"=Kestrolumen.XLA!NetOutputPredictionVBA\", A1, \"iris\", 0.5, "
                                 "(missing), (missing)) failed with code 32: no workbook 'Kestrolumen.XLA' "
                                 "is open\n"
                                 "xlUDF(\"=Kestrolumen.XLS!NetOutputPredictionVBA\", A1, \"iris\", 0.5, "
                                 "(missing), (missing)) -> #VALUE!\n"
                                 "xlFree(#VALUE!)\n"
                                 "xlfError(int 1) -> TRUE\n"
                                 "xlFree(TRUE)\n"
                                 "xlfUnregister(1001) -> TRUE\n"));
    EXPECT_THAT(err, HasSubstr("leaked 0, freed twice 0, foreign 0\n"));
}

TEST_F(ProgramTest, NamesTheFileAndTheCellOfEveryFault) {
    const std::string at = "sheet.csv: row ";
    EXPECT_EQ(RunSheet("1\n=1+\n"), kBadInput);
    EXPECT_THAT(err, HasSubstr(at + "2, column 1 (A2): bad formula =1+: at character 4"));
    EXPECT_THAT(out, IsEmpty());
    EXPECT_EQ(RunSheet("=Foo()\n7\n"), kBadInput);
    EXPECT_THAT(err, HasSubstr(at + "1, column 1 (A1): unknown function 'Foo'"));
    EXPECT_EQ(out, "#NAME?\n7\n") << "the rest is calculated";
}

TEST_F(ProgramTest, RefusesABadCommandLine) {
    const std::pair<std::vector<std::string>, const char*> lines[] = {
        {{}, "a command is missing"},
        {{"run"}, "the name of a sheet is missing"},
        {{"run", "a", "--tracer"}, "unknown option '--tracer'"},
        {{"run", "a", "--trace=yes"}, "--trace takes no value"},
        {{"run", "a", "--addin"}, "--addin needs a value"},
        {{"run", "--", ""}, "the name of a sheet is missing"},
        {{"run", "a", "--threads=0"}, "--threads takes a whole number from 1 on, not '0'"},
        {{"run", "a", "--threads", "2x"}, "not '2x'"},
        {{"eval"}, "the name of an add-in is missing"},
        {{"eval", "x.xll"}, "a formula is missing behind the add-in 'x.xll'"},
        {{"eval", "x.xll", "1", "--repeat=1e6"}, "--repeat takes a whole number from 1 on, not '1e6'"},
        {{"run", "a", "--companion=rosa"}, "--companion takes one of iris, none, not 'rosa'"},
    };
    for (const auto& [arguments, message] : lines) {
        EXPECT_EQ(Run(arguments), kBadUsage) << message;
        EXPECT_THAT(err, AllOf(StartsWith("excelhost: "), HasSubstr(message), HasSubstr("--help")));
        EXPECT_THAT(out, IsEmpty());
    }
    for (const Command& command : Commands()) {
        EXPECT_EQ(Run({"--help"}), kDone);
        EXPECT_THAT(out, HasSubstr("\n  " + command.name + " "));
        EXPECT_EQ(Run({command.name, "x", "-h"}), kDone);
        EXPECT_THAT(out, StartsWith("Usage: excelhost " + command.name + " "));
        for (const Option& option : command.options)
            EXPECT_THAT(out, HasSubstr("\n  " + std::string(option.name)));
    }
}

TEST_F(ProgramTest, TellsWhichFileIsNotThere) {
    EXPECT_EQ(Run({"run", "no such.csv"}), kBadInput);
    EXPECT_EQ(err, "excelhost: no such.csv: there is no such file\n");
    EXPECT_EQ(Run({"run", folder_.Path().string()}), kBadInput);
    EXPECT_THAT(err, HasSubstr("is a folder"));
    const std::string sheet = File("1\n");
    EXPECT_EQ(Run({"run", sheet}, folder_.Path()), kBadInput);
    EXPECT_THAT(err, AllOf(HasSubstr("there is no add-in"), HasSubstr("kestrolumen.xll")));
    EXPECT_EQ(Run({"run", sheet, "--addin", sheet}), kBadInput);
    EXPECT_THAT(err, HasSubstr("sheet.csv' can't be loaded: it is no module"));
}

// The head of a module by which its system and width are known, and no more.
std::string ModuleHead(bool isWindows, int bits) {
    if (!isWindows)
        return std::string(
                   "\x7F"
                   "ELF") +
               (bits == 64 ? '\2' : '\1') + std::string(60, '\0');
    std::string head =
        "MZ" + std::string(0x3A, '\0') + '\x40' + std::string(3, '\0') + "PE" + std::string(2, '\0');
    return head + (bits == 64 ? "\x64\x86" : "\x4C\x01") + std::string(18, '\0');
}

TEST_F(ProgramTest, TellsWhyAModuleCannotBeLoaded) {
    constexpr bool isWindows = std::filesystem::path::preferred_separator == '\\';
    constexpr int own = sizeof(void*) * 8;
    constexpr int other = 96 - own;
    const std::pair<std::string, std::string> addIns[] = {
        {File(ModuleHead(isWindows, other), u8"width.xll"), "it is a " + std::to_string(other) +
                                                                "-bit module, and this is the " +
                                                                std::to_string(own) + "-bit program"},
        {File(ModuleHead(!isWindows, own), u8"system.xll"),
         isWindows ? "it is a module for Linux, and this is the program for Windows"
                   : "it is a module for Windows, and this is the program for Linux"},
        {NEEDY_ADDIN,
         isWindows ? "it needs needed.dll, which isn't found" : "needed.so: cannot open shared object"},
    };
    const std::string sheet = File("1\n");
    for (const auto& [addIn, why] : addIns) {
        EXPECT_EQ(Run({"run", sheet, "--addin", addIn}), kBadInput) << addIn;
        EXPECT_THAT(err, AllOf(HasSubstr(".xll' can't be loaded: "), HasSubstr(why)));
    }
}

TEST_F(ProgramTest, CalculatesSheetsThatReferToOneAnother) {
    const std::string data = "Data=" + File("10,=Model!A1+1\n", u8"a.csv");
    const std::string model =
        "Model=" +
        File("\"=SUM(data!A:A)*2\",=data!B1,='Data'!$A$1:B1,\"=INDIRECT(\"\"Data!A\"\"&1)\"\n", u8"b.csv");
    EXPECT_EQ(Run({"run", data, model}), kDone) << err;
    EXPECT_EQ(out, "# Data\n10,21\n\n# Model\n20,21,#VALUE!,10\n") << "a range has no cell in column C";
    EXPECT_EQ(Run({"run", data, "Data=" + File("1\n")}), kBadInput);
    EXPECT_THAT(err, HasSubstr("two sheets have the name 'Data'"));
    EXPECT_EQ(Run({"run", data, "Model=" + File("=Data!B1\n", u8"b.csv")}), kBadInput);
    EXPECT_THAT(
        err,
        HasSubstr("b.csv: row 1, column 1 (A1): circular reference: [a.csv]Data!B1 -> [b.csv]Model!A1 -> "
                  "[a.csv]Data!B1\n"));
    EXPECT_EQ(Run({"run", File("=Other!A1\n", u8"x=y.csv")}), kBadInput) << "the file has this name";
    EXPECT_THAT(err,
                HasSubstr("x=y.csv: row 1, column 1 (A1): bad formula =Other!A1: at character 2, there is no "
                          "sheet 'Other'"));
}

TEST_F(ProgramTest, ShowsWhatASheetHoldsWithoutHarm) {
    using namespace std::string_literals;
    const std::pair<std::string, std::string> sheets[] = {
        {"=1+\0\x1B[2J\xC2\x9B\xE2\x80\xAE\n"s,
         "bad formula =1+\\u0000\\u001B[2J\\u009B\\u202E: at character 4, an operand is "
         "expected, not '\\u0000'\n"},
        {"=1+" + std::string(196, '0') + "\xF0\x9F\x98\x80)\n", "0…: at character"},
        {"=\xC3\xA4(\x1B\n", "an operand is expected, not '\\u001B'"},
        {"=\xC3\xA4(1\n", "the parenthesis of '\xC3\xA4' isn't closed"},
        {"a,Stra\xDF"
         "e\n",
         "column 2 (B1): the text isn't UTF-8: byte DF behind 'Stra' is '\xC3\x9F' in Latin-1"},
        {"\xFF\xFE"
         "1\0,\0"s,
         "the text is UTF-16"},
        {"1\0,\0"
         "2\0"s,
         "the text is UTF-16"},
    };
    for (const auto& [sheet, message] : sheets) {
        EXPECT_EQ(RunSheet(sheet), kBadInput);
        EXPECT_THAT(err, HasSubstr(message));
        EXPECT_THAT(err, AllOf(HasSubstr("sheet.csv: row 1"), testing::Not(HasSubstr("\x1B"))));
    }
    std::string many;
    for (int i = 0; i < 150; ++i) many += "=1+\n";
    EXPECT_EQ(RunSheet(many), kBadInput);
    EXPECT_THAT(err, HasSubstr("sheet.csv: 50 more cells have faults\n"));
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
        {BAD_ADDIN_4, kBadInput, "failed in the workbook's handshake: handshake"},
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
