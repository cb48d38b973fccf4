#include "excelhost/commands/cases.h"

#include "excelhost/commands/formulas.h"
#include "excelhost/commands/markup.h"
#include "excelhost/numbers.h"
#include "excelhost/sheet.h"
#include "excelhost/sheetfiles.h"

#include <array>
#include <cmath>
#include <cstdio>

namespace excelhost {
namespace {

enum Column : std::size_t { kFormula, kExpected, kTolerance, kName, kColumns };

Tolerance ToleranceFrom(std::string text) {
    Tolerance tolerance;
    tolerance.isRelative = text.ends_with('%');
    if (tolerance.isRelative) text.pop_back();
    if (text.empty() && !tolerance.isRelative) return tolerance;
    if (!ReadNumber(text, tolerance.amount) || tolerance.amount < 0) {
        throw InputError("'" + Excerpt(text) + "' is no tolerance; 0.001 and 0.1% are");
    }
    if (tolerance.isRelative) tolerance.amount /= 100;
    return tolerance;
}

Case CaseFrom(std::vector<std::string> row, std::size_t number) {
    if (row.size() < 2) throw InputError("the expected value is missing");
    if (row.size() > kColumns) {
        throw InputError("a case has at most 4 fields: formula, expected value, tolerance, name");
    }
    row.resize(kColumns);
    return {number, row[kFormula], row[kExpected], ToleranceFrom(row[kTolerance]),
            row[kName].empty() ? row[kFormula] : row[kName]};
}

bool SameValue(const Value& value, const Value& expected, const Tolerance& tolerance) {
    const double* number = value.If<double>();
    const double* wanted = expected.If<double>();
    if (number == nullptr || wanted == nullptr) {
        const bool isNothing = expected.Is<Text>() && expected.If<Text>()->empty() && value.Is<Empty>();
        return isNothing || value == expected;
    }
    const double most = tolerance.isRelative ? std::fabs(*wanted) * tolerance.amount : tolerance.amount;
    const double off = std::fabs(*number - *wanted);
    // 3 is within 0.1 of 3.1, though not in binary.
    return SameNumber(*number, *wanted) || off <= most || SameNumber(off, most);
}

// The elements of {1,"a";TRUE,#N/A}; none when it isn't one.
std::vector<std::vector<std::string>> ElementsOf(std::string_view text) {
    if (!text.starts_with('{') || !text.ends_with('}')) return {};
    text = text.substr(1, text.size() - 2);
    std::vector<std::vector<std::string>> rows(1);
    rows.back().emplace_back();
    bool isQuoted = false;
    for (const char c : text) {
        if (c == '"') isQuoted = !isQuoted;
        if (!isQuoted && c == ';') rows.emplace_back();
        if (!isQuoted && (c == ';' || c == ',')) {
            rows.back().emplace_back();
        } else {
            rows.back().back() += c;
        }
    }
    return rows;
}

bool MeetsArray(const Array& array, const Case& expected) {
    const auto rows = ElementsOf(expected.expected);
    if (rows.size() != array.rows) return false;
    for (std::size_t row = 0; row < array.rows; ++row) {
        if (rows[row].size() != array.columns) return false;
        for (std::size_t column = 0; column < array.columns; ++column) {
            const std::string& element = rows[row][column];
            // A text is written as in a formula.
            const Value wanted = ValueFromField(element.starts_with('"') ? "=" + element : element);
            if (!SameValue(array.At(row, column), wanted, expected.tolerance)) return false;
        }
    }
    return true;
}

std::string Seconds(double seconds) {
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%.6f", seconds);
    return text.data();
}

std::string Attribute(const char* name, std::string_view value) {
    return std::string(" ") + name + "=\"" + XmlText(value) + "\"";
}

std::string TestCase(const std::string& suite, const std::string& name, double seconds,
                     const std::string& inside) {
    return "    <testcase" + Attribute("classname", suite) + Attribute("name", name) +
           Attribute("time", Seconds(seconds)) +
           (inside.empty() ? "/>\n" : ">\n      " + inside + "\n    </testcase>\n");
}

}  // namespace

std::vector<Case> ReadCases(const std::string& file) {
    const std::string csv = ReadInput(file);
    std::vector<Case> cases;
    std::size_t number = 0;
    try {
        for (std::vector<std::string>& row : ReadTable(csv, RowLength::Any)) {
            const bool isHead = ++number == 1 && SameName(Wide(row.front()), TEXT("formula"));
            if (!isHead && !row.front().empty()) cases.push_back(CaseFrom(std::move(row), number));
        }
    } catch (const SheetFaults& faults) {
        throw InputError(Excerpt(file) + ": row " + std::to_string(faults.All().front().Row()) + ": " +
                         faults.what());
    } catch (const InputError& fault) {
        throw InputError(Excerpt(file) + ": row " + std::to_string(number) + ": " + fault.what());
    }
    if (cases.empty()) throw InputError(Excerpt(file) + ": there are no cases");
    return cases;
}

bool Meets(const Value& value, const Case& expected) {
    if (const Array* array = value.If<Array>()) return MeetsArray(*array, expected);
    return SameValue(value, ValueFromField(expected.expected), expected.tolerance);
}

std::string Describe(const Case& one, const Verdict& verdict) {
    std::string text = Excerpt(one.formula);
    if (verdict.kind == Verdict::Kind::NotRun) return verdict.problem;
    text += " gives " + Excerpt(verdict.got) + ", expected " + Excerpt(one.expected);
    if (one.tolerance.amount != 0) {
        text += " within " + NumberText(one.tolerance.amount * (one.tolerance.isRelative ? 100 : 1)) +
                (one.tolerance.isRelative ? "%" : "");
    }
    return verdict.problem.empty() ? text : text + ": " + verdict.problem;
}

std::string JUnitReport(const std::string& suite, std::span<const Case> cases,
                        std::span<const Verdict> verdicts, const std::vector<std::string>& faults) {
    std::string tests;
    std::size_t failures = faults.empty() ? 0 : 1;
    std::size_t errors = 0;
    double seconds = 0;
    for (std::size_t i = 0; i < cases.size(); ++i) {
        const Verdict& verdict = verdicts[i];
        seconds += verdict.seconds;
        std::string inside;
        if (verdict.kind != Verdict::Kind::Passed) {
            const bool isRun = verdict.kind == Verdict::Kind::Failed;
            ++(isRun ? failures : errors);
            inside =
                (isRun ? "<failure" : "<error") + Attribute("message", Describe(cases[i], verdict)) + "/>";
        }
        tests += TestCase(suite, cases[i].name, verdict.seconds, inside);
    }
    std::string all;
    for (const std::string& fault : faults) all += (all.empty() ? "" : "\n") + fault;
    tests += TestCase(suite, "the add-in's account", 0,
                      faults.empty() ? "" : "<failure" + Attribute("message", all) + "/>");
    const std::string counts = Attribute("tests", std::to_string(cases.size() + 1)) +
                               Attribute("failures", std::to_string(failures)) +
                               Attribute("errors", std::to_string(errors)) +
                               Attribute("time", Seconds(seconds));
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites" + counts + ">\n  <testsuite" +
           Attribute("name", suite) + counts + ">\n" + tests + "  </testsuite>\n</testsuites>\n";
}

}  // namespace excelhost
