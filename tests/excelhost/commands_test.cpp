// The commands that look at add-ins, each with add-ins in C.
#include "programtest.h"

#include "excelhost/commands/markup.h"
#include "excelhost/commands/soak.h"

#include <algorithm>
#include <functional>
#include <iterator>

namespace excelhost {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

using CommandsTest = ProgramTest;

TEST_F(CommandsTest, EvaluatesFormulasOfTheCommandLine) {
    const std::string data = "Data=" + File("1,2\n3,=A2+1\n");
    EXPECT_EQ(Run({"eval", TYPES_ADDIN, "TypeB(5,2)", "=TypeC(\"abc\")", "1/0", "\"a, \"\"b\"\"\"",
                   "\"a\"&CHAR(10)&\"b\"", "SUM(A1:B2*2)", "TypeQ(Data!A1:B2)", "A1:B1&\"\"", "C5=0",
                   "--sheet", data}),
              kDone)
        << err;
    EXPECT_EQ(out, "3\nbc\n#DIV/0!\na, \"b\"\n\"a\nb\"\n20\n{1,2;3,4}\n{\"1\",\"2\"}\nTRUE\n");
    EXPECT_THAT(err, IsEmpty());

    EXPECT_EQ(Run({"eval", TYPES_ADDIN, "1", "Foo(1)+1", "TypeB(1,2,3)"}), kBadInput);
    EXPECT_EQ(out, "1\n#NAME?\n#VALUE!\n");
    EXPECT_EQ(err,
              "excelhost: formula 2: unknown function 'Foo'\n"
              "excelhost: formula 3: 'TypeB' takes 2 arguments, not 3\n");
    const std::pair<const char*, const char*> refused[] = {
        {"SUM(B2:C3)", "SUM(B2:C3): there is no sheet for B2:C3; --sheet FILE.csv gives one"},
        {"1+", "1+: at character 3, an operand is expected"},
        {"=1+", "=1+: at character 4, an operand is expected"},
        {"", ": at character 1, an operand is expected"},
        {"Data!A1", "Data!A1: at character 1, there is no sheet 'Data'"},
    };
    for (const auto& [formula, message] : refused) {
        EXPECT_EQ(Run({"eval", TYPES_ADDIN, formula}), kBadInput);
        EXPECT_EQ(err, "excelhost: " + std::string(message) + "\n");
    }
}

TEST_F(CommandsTest, ABarOnATerminalIsWipedWhenTheValuesAreThere) {
    const std::vector<std::string> options = {"--addin", TYPES_ADDIN, "--progress"};
    EXPECT_EQ(RunSheet("=1+1\n=A1+1\n", options), kDone);
    EXPECT_THAT(err, IsEmpty()) << "nobody looks on";
    errIsTerminal = true;
    for (const char* const threads : {"1", "2"}) {
        std::vector<std::string> all = options;
        all.insert(all.end(), {"--threads", threads});
        EXPECT_EQ(RunSheet("=1+1\n=A1+1\n", all), kDone);
        EXPECT_EQ(out, "2\n3\n");
        EXPECT_THAT(err, AllOf(StartsWith("\rrun ["), HasSubstr("#] 100%"), EndsWith(" \r")));
    }
}

TEST_F(CommandsTest, RepeatsAndWatchesMemory) {
    EXPECT_EQ(Run({"eval", TYPES_ADDIN, "TypeB(5,2)", "--repeat", "100"}), kDone);
    EXPECT_EQ(out, "3\n");
    EXPECT_THAT(err, AllOf(StartsWith("100 repetitions in "), EndsWith(": flat\n")));
#ifdef MEMORY_CAN_BE_FLAT
    // The host keeps what was freed for a while, to tell it from what never was its own.
    EXPECT_EQ(Run({"eval", TYPES_ADDIN, "Evaluates(\"1&2\")", "--repeat=30000"}), kDone) << err;
#endif
    EXPECT_EQ(Run({"eval", FAULTY_ADDIN, "Leaks()", "--repeat=30000"}), kBadAccount);
    EXPECT_THAT(
        err, AllOf(HasSubstr("memory grows by "), HasSubstr("never came back through xlFree (30000 times)")));

    // The course alone: what is taken once, early or late, is no growth.
    const auto growth = [](const std::function<std::size_t(std::size_t)>& memory) {
        MemoryCourse course{1000, {}};
        for (std::size_t i = 0; i <= 100; ++i) course.samples.push_back(std::size_t{5000000} + memory(i));
        return GrowthOf(course);
    };
    EXPECT_EQ(growth([](std::size_t i) { return i * 100000; }), 10000);
    EXPECT_EQ(growth([](std::size_t i) { return std::min<std::size_t>(i, 9) * 1000000; }), 0);
    EXPECT_EQ(growth([](std::size_t i) { return i < 60 ? 0 : std::size_t{9000000}; }), 0);
    EXPECT_EQ(growth([](std::size_t i) { return i % 2 * 400000; }), 0);
}

TEST_F(CommandsTest, HoldsCasesAgainstTheirValues) {
    const std::string data = File("1,2\n3,4\n", u8"data.csv");
    const struct {
        const char* row;
        const char* fault;  // empty: it passes
    } cases[] = {
        {"formula,expected,tolerance,name", ""},
        {"\"TypeB(5,2)\",3", ""},
        {"\"=TypeB(5,2)\",3.1,0.1", ""},
        {"\"TypeB(5,2)\",3.1,0.09,near", "row 4 (near): TypeB(5,2) gives 3, expected 3.1 within 0.09"},
        {"\"TypeB(1,101)\",-101,1%", ""},
        {"\"TypeB(1,101)\",-102,1%", "row 6: TypeB(1,101) gives -100, expected -102 within 1%"},
        {"0.1+0.2,0.3", ""},
        {"1/0,#DIV/0!,,", ""},
        {"1/0,#N/A", "row 9: 1/0 gives #DIV/0!, expected #N/A"},
        {"", ""},
        {"\"TypeC(\"\"xAb\"\")\",Ab", ""},
        {"\"TypeC(\"\"xAb\"\")\",ab", "row 12: TypeC(\"xAb\") gives Ab, expected ab"},
        {"1=1,TRUE", ""},
        {"1=1,1", "row 14: 1=1 gives TRUE, expected 1"},
        {"\"1&\"\"\"\"\",\"=\"\"1\"\"\"", ""},
        {"\"A1:B2*2\",\"{2,4;6,8}\"", ""},
        {"\"A1:B2*2\",\"{2,4;6,8.5}\",0.5", ""},
        {"\"A1:B2*2\",\"{2,4;6}\"", "row 18: A1:B2*2 gives {2,4;6,8}, expected {2,4;6}"},
        {"\"A1:B1&\"\";\"\"\",\"{\"\"1;\"\",\"\"2;\"\"}\"", ""},
        {"Foo(),#NAME?", "row 20: Foo() gives #NAME?, expected #NAME?: unknown function 'Foo'"},
        {"1+,1", "row 21: 1+: at character 3, an operand is expected"},
    };
    std::string file;
    std::string faults;
    std::size_t failed = 0;
    for (const auto& c : cases) {
        file += std::string(c.row) + "\n";
        if (*c.fault == 0) continue;
        ++failed;
        faults += (folder_.Path() / "cases.csv: ").string() + c.fault + "\n";
    }
    const std::string name = File(file, u8"cases.csv");
    EXPECT_EQ(Run({"test", TYPES_ADDIN, name, "--sheet", data}), kBadInput) << err;
    EXPECT_EQ(out, faults + std::to_string(std::size(cases) - 2) + " cases, " + std::to_string(failed) +
                       " failed\n");

    EXPECT_EQ(Run({"test", TYPES_ADDIN, File("1,1\n")}), kDone);
    EXPECT_EQ(out, "1 case, passed\n");
    const std::pair<const char*, const char*> refused[] = {
        {"1\n", "row 1: the expected value is missing"},
        {"1,1\n1,1,x\n", "row 2: 'x' is no tolerance; 0.001 and 0.1% are"},
        {"1,1,-1\n", "'-1' is no tolerance"},
        {"1,2,,name,5\n", "a case has at most 4 fields"},
        {"1,\"2\n", "row 1: the quote isn't closed"},
        {"formula,expected\n", "there are no cases"},
    };
    for (const auto& [text, message] : refused) {
        EXPECT_EQ(Run({"test", TYPES_ADDIN, File(text)}), kBadInput) << text;
        EXPECT_THAT(err, HasSubstr(message));
    }
}

TEST_F(CommandsTest, ReportsCasesForBuildServers) {
    const std::string report = (folder_.Path() / "report.xml").string();
    EXPECT_EQ(Run({"test", FAULTY_ADDIN, File("Leaks(),1\nLeaks(),2\n"), "--junit", report}), kBadAccount);
    std::ifstream file(report);
    const std::string xml{std::istreambuf_iterator<char>(file), {}};
    EXPECT_THAT(xml, AllOf(HasSubstr("tests=\"3\" failures=\"2\" errors=\"0\""),
                           HasSubstr("name=\"the add-in's account\""),
                           HasSubstr("never came back through xlFree (2 times)&#10;lent 0")));
    EXPECT_EQ(Run({"test", FAULTY_ADDIN, File("1,1\n"), "--junit", folder_.Path().string()}), kBadInput);
    EXPECT_THAT(err, HasSubstr("can't be written"));
    EXPECT_EQ(XmlText("<\"&\n\x01\xEF\xBF\xBF\xC3\xA4"), "&#60;&#34;&#38;&#10;\\u0001\\uFFFF\xC3\xA4");
}

TEST_F(CommandsTest, InspectsWhatAnAddInShowsOfItself) {
    EXPECT_EQ(Run({"inspect", TYPES_ADDIN}), kDone) << err;
    EXPECT_THAT(out, AllOf(HasSubstr("exports               xlAutoOpen"), HasSubstr("\nCommands: 0\n"),
                           HasSubstr("  TypeX()\n    type text           >QX of TypeX\n"
                                     "    result              later, through a handle (X)\n"
                                     "    argument 1          value (Q)\n"),
                           HasSubstr("result              argument 1, changed in place"),
                           HasSubstr("text, ended by a zero, UTF-16 (C%)")));
    EXPECT_EQ(Run({"inspect", FAULTY_ADDIN, "--json"}), kDone);
    EXPECT_THAT(out, AllOf(HasSubstr("\"commands\": []"), HasSubstr("had a registration refused"),
                           HasSubstr("\"isFault\": false")));
}

TEST_F(CommandsTest, RefusesCallsOnPurpose) {
    const auto value = [&](const char* refusal) {
        EXPECT_EQ(Run({"eval", TYPES_ADDIN, "Evaluates(\"1+1\")", "Evaluates(\"2+2\")", "--refuse", refusal}),
                  kDone)
            << err;
        return out;
    };
    const std::string both = value("xlfEvaluate=32");
    EXPECT_THAT(both, AllOf(testing::Not(HasSubstr("2\n")), testing::Not(HasSubstr("4\n"))));
    EXPECT_EQ(value("257=xlretFailed"), both);
    EXPECT_THAT(value("xlfEvaluate:1=xlretUncalced"), EndsWith("\n4\n"));
    EXPECT_THAT(value("xlfEvaluate:2=xlretUncalced"), StartsWith("2\n"));
    EXPECT_EQ(value("xlfEvaluate:3=xlretUncalced"), "2\n4\n");
    EXPECT_EQ(
        Run({"eval", TYPES_ADDIN, "1", "--trace", "--refuse", "xlCoerce=1", "--refuse", "xlGetName:2=32"}),
        kDone);
    EXPECT_THAT(err, HasSubstr("xlGetName() failed with code 32: refused by script"));
    for (const char* bad : {"xlCoerce", "xlCourse=32", "xlCoerce:0=32", "xlCoerce:x=32", "xlCoerce=0",
                            "xlCoerce=xlret", "=32"}) {
        EXPECT_EQ(Run({"run", "x", std::string("--refuse=") + bad}), kBadUsage) << bad;
    }
}

TEST_F(CommandsTest, FailsAllocationsOnPurpose) {
    for (int nth = 1; nth <= 4; ++nth) {
        const std::string number = std::to_string(nth);
        EXPECT_EQ(Run({"eval", FAULTY_ADDIN, "Allocates(3)", "--fail-allocation", number}), kDone) << err;
        EXPECT_EQ(out, nth <= 3 ? number + "\n" : "0\n");
        EXPECT_THAT(err, HasSubstr(nth <= 3 ? "allocated " + number + " times, of which number " + number +
                                                  " failed\n"
                                            : "allocated 3 times, none failed\n"));
    }
    EXPECT_EQ(Run({"eval", FAULTY_ADDIN, "Allocates(3)"}), kDone);
    EXPECT_EQ(out, "0\n") << "no longer than for one run";
}

}  // namespace
}  // namespace excelhost
