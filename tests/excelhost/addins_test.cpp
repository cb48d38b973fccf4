// Add-ins in C through the program: every type, and every bad habit, which must be found and named.
#include "excelhost/program.h"
#include "excelhost/value.h"

#include "support/folder.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

namespace excelhost {
namespace {

using testing::HasSubstr;

class AddInsTest : public ::testing::Test {
  protected:
    // Calculates formulas below two rows of data; gives their values, one a line.
    int Run(const std::vector<std::string>& formulas, const char* addIn, const char* threads = "1") {
        const std::filesystem::path path = folder_.Path() / "sheet.csv";
        std::ofstream sheet(path, std::ios::binary);
        sheet << "2,3,Ab,TRUE\n4,5,,#N/A\n";
        for (const std::string& formula : formulas) {
            sheet << '"';
            for (const char c : formula) sheet << (c == '"' ? "\"\"" : std::string(1, c));
            sheet << "\",,,\n";
        }
        sheet.close();
        std::ostringstream out;
        std::ostringstream messages;
        Surroundings around{folder_.Path(), out, messages};
        const auto name = path.u8string();
        const std::vector<std::string> arguments = {
            "run", {name.begin(), name.end()}, "--addin", addIn, "--threads", threads};
        const int code = RunProgram(arguments, Commands(), around);
        std::istringstream lines(out.str());
        values.clear();
        for (std::string line; std::getline(lines, line);) values.push_back(line.substr(0, line.find(",,,")));
        values.erase(values.begin(), values.begin() + (values.size() < 2 ? 0 : 2));
        err = messages.str();
        return code;
    }

    const support::Folder folder_;
    std::vector<std::string> values;
    std::string err;
};

TEST_F(AddInsTest, EveryTypeIsPassedBothWays) {
    std::string most = "=Most(1";
    for (int i = 1; i < 254; ++i) most += ",1";
    const std::pair<std::string, const char*> cases[] = {
        {"=TypeA(TRUE)", "FALSE"},
        {"=TypeA(\"no\")", "#VALUE!"},
        {"=TypeB(5,2)", "3"},
        {"=TypeB(\"7\",TRUE)", "6"},
        {"=TypeB(5,)", "5"},
        {"=TypeB(D2,1)", "#N/A"},
        {"=TypeC(\"abc\")", "bc"},
        {"=TypeC(12.5)", "2.5"},
        {"=TypeCWide(\"\u00e4\u4e2d\")", "\u4e2d"},
        {"=TypeD(\"abc\")", "ab!"},
        {"=TypeDWide(\"\u4e2da\")", "\u4e2d!"},
        {"=TypeE(5)", "2.5"},
        {"=TypeF(\"one\")", "one and more"},
        {"=TypeFWide(\"f\")", "f+"},
        {"=TypeG(\"\u00fc\")", "\u00fc+"},
        {"=TypeGWide(\"\")", "+"},
        {"=TypeH(65534)", "65535"},
        {"=TypeH(-1)", "#NUM!"},
        {"=TypeI(-32767)", "-32768"},
        {"=TypeI(40000)", "#NUM!"},
        {"=TypeJ(1000000.9)", "2000000"},
        {"=TypeJ(3E9)", "#NUM!"},
        {"=TypeK(A1:B2)", "240"},
        {"=TypeK(C1)", "#VALUE!"},
        {"=TypeKWide(A1:B2)", "22"},
        {"=ShrinksK(A1:B2)", "5"},
        {"=TypeL(1)", "FALSE"},
        {"=TypeM(5)", "-5"},
        {"=TypeN(70000)", "-70000"},
        {"=TypeO(A1:B2,2)", "48"},
        {"=TypeOWide(A1:B2)", "5"},
        {"=TypeP(\"x\")", "old"},
        {"=TypeP(A1:B2)", "64"},
        {"=TypeQ(\"same\")", "same"},
        {"=TypeQ(D2)", "#N/A"},
        {"=TypeU(A1:B2)", "1024"},
        {"=TypeU()", "128"},
        {"=CoercesU(C1)", "2"},
        {"=TypeX(A1)", "2"},
        {"=Mixed(1,2,3,\"A\",5,6,7,8,9,1,2,3,4)", "4321987650386"},
        {most + ",1000)", "1254"},
        {"=Evaluates(\"A1+TypeJ(B2)\")", "12"},
        {"=Evaluates(\"=B2\")", "5"},
        {"=Evaluates(\"1+\")", "#VALUE!"},
        {"=Sets(A1)", "32"},
        {"=RegistersLater(\"Late\")", "77"},
        {"=RegistersLater(\"Never\")", "#N/A"},
        {"=Unregisters(\"other.xll\")", "FALSE"},
        {"=ByNumber(4,A1:B2)", "14"},
        {"=ByNumber(346,A1:B2,\">3\")", "2"},
        {"=ByNumber(29,A1:A2,2)", "4"},
        {"=ByNumber(1,A1>1,B2)", "5"},
        {"=ByNumber(8,B2)", "2"},
        {"=ByNumber(27,1)", "#NUM!"},
        {"=ByNumber(600,1)", "#NUM!"},
        {"=Calls(\"TypeJ\",\"JJ\",21)", "42"},
        {"=Calls(\"TypeJ\",\"JZ\",21)", "#VALUE!"},
        {"=Calls(\"Missing\",\"JJ\",21)", "#VALUE!"},
        {"=Calls(\"TypeJ\",,21)", "42"},
        {"=Calls(\"Unlisted\",,41)", "42"},
        {"=Calls(\"Late\",,41)", "#VALUE!"},
        {"=Unlisted(1)", "2"},
        {"=KeepsName(\"kept\")", "32"},
    };
    std::vector<std::string> formulas;
    for (const auto& [formula, value] : cases) formulas.push_back(formula);
    EXPECT_EQ(Run(formulas, TYPES_ADDIN), kDone) << err;
    ASSERT_EQ(values.size(), formulas.size());
    for (std::size_t i = 0; i < values.size(); ++i) EXPECT_EQ(values[i], cases[i].second) << formulas[i];

    EXPECT_EQ(Run({"=Unregisters(\"TYPES.xll\")", "=TypeJ(A3)"}, TYPES_ADDIN), kBadInput);
    EXPECT_THAT(values, testing::ElementsAre("TRUE", "#NAME?")) << "all of the module's are gone";
}

TEST_F(AddInsTest, EveryBadHabitIsFoundAndNamed) {
    const struct {
        const char* formula;
        const char* value;
        const char* found;
    } cases[] = {
        {"=Leaks()", "1", "what 'Leaks' of faulty.xll in a result of xlGetName was given never came back"},
        {"=FreesTwice()", "8",
         "'FreesTwice' of faulty.xll handed xlFree a value that is freed a second time"},
        {"=FreesForeign()", "8",
         "'FreesForeign' of faulty.xll handed xlFree a value that is not from this host"},
        {"=WritesText(C1)", "1", "'WritesText' of faulty.xll wrote into memory that it was only lent"},
        {"=WritesNumber(1)", "1", "'WritesNumber' of faulty.xll wrote into memory that it was only lent"},
        {"=WritesBeyond(\"a\")", "1",
         "'WritesBeyond' of faulty.xll wrote beyond the memory that it was lent"},
        {"=GivesStack()", "#VALUE!", "gave the address of a variable of its own, which is gone"},
        {"=GivesUnfreeable()", "0", "flags its result xlbitDLLFree, but the add-in exports no xlAutoFree12"},
        {"=CoercesGarbage()", "8016", "called xlCoerce, and an operand is an uninitialised record"},
        {"=CoercesGarbage()", "8016",
         "called xlCoerce, and an operand is a pointer to memory that isn't there"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Run({c.formula}, FAULTY_ADDIN), kBadAccount) << c.formula;
        EXPECT_THAT(values, testing::ElementsAre(c.value)) << c.formula;
        EXPECT_THAT(err, HasSubstr(c.found)) << c.formula;
    }
    // What is refused isn't a fault of the account.
    EXPECT_EQ(Run({"=GivesNull()", "=AlertsUser()"}, FAULTY_ADDIN), kDone) << err;
    EXPECT_THAT(values, testing::ElementsAre("#NUM!", "32"));
    for (const char* reason :
         {"the type text has a 'Z'", "begins with '%'", "exports no 'NotThere'", "'#' beside '$'"}) {
        EXPECT_THAT(err, HasSubstr(reason));
    }
}

// Four kinds of formula in turns, over several windows of the order; the last one refers to all cells above.
TEST_F(AddInsTest, ManyThreadsGiveTheValuesOfOne) {
    std::vector<std::string> formulas;
    for (int row = 3; row < 2403; row += 4) {
        const std::string above = "A" + std::to_string(row - 1);
        formulas.insert(formulas.end(), {"=Counts()", "=Asks(B2)", "=IsRefused(1)",
                                         "=SUM(A3:" + above + ")/SUMIF(A3:A4,1,A1)"});
    }
    EXPECT_EQ(Run(formulas, THREADS_ADDIN, "4"), kDone) << err;
    ASSERT_EQ(values.size(), formulas.size());
    for (std::size_t i = 0; i < values.size(); i += 4) {
        ASSERT_EQ(values[i], std::to_string(i / 4 + 1)) << "in the order of one thread";
        ASSERT_EQ(values[i + 1], std::to_string(500 + i + 4)) << "of B2 and the row";
        ASSERT_EQ(values[i + 2], std::to_string(5 * xlretNotThreadSafe));
    }
    const auto byMany = values;
    EXPECT_EQ(Run(formulas, THREADS_ADDIN), kDone) << err;
    EXPECT_EQ(values, byMany);

    EXPECT_EQ(Run(std::vector<std::string>(12, "=Meets(A1)"), THREADS_ADDIN, "2"), kDone) << err;
    EXPECT_EQ(values[0], "1") << "two threads have been in it at once";
}

}  // namespace
}  // namespace excelhost
