// Cases for an add-in: formulas and what they must give.
#pragma once

#include "excelhost/value.h"

#include <span>
#include <string>
#include <vector>

namespace excelhost {

// How far a number may be off.
struct Tolerance {
    double amount = 0;
    bool isRelative = false;  // to the expected number
};

struct Case {
    std::size_t row = 0;  // in the file, from 1 on
    std::string formula;
    std::string expected;  // the field
    Tolerance tolerance;
    std::string name;  // the formula when the file gives none
};

// The cases of a CSV file in UTF-8, a row each: a formula with or without its "=", the expected value as a cell of a
// sheet holds it, a tolerance (0.001, or 0.1% of the expected value), a name; the last two may be left out. Rows
// without a formula are skipped, and so is a first row that begins with "formula". InputError.
[[nodiscard]] std::vector<Case> ReadCases(const std::string& file);

// Whether a value is what the case expects: errors and truth values are the same, texts to the letter; numbers agree
// in 15 digits or within the tolerance; an array is given as {1,2;3,4}, its elements compared like values.
[[nodiscard]] bool Meets(const Value& value, const Case& expected);

// What became of a case.
struct Verdict {
    enum class Kind { Passed, Failed, NotRun } kind = Kind::NotRun;
    std::string got;  // the value
    // Of a case that isn't run why; of one that failed what stands in its way, empty when only the value differs.
    std::string problem;
    double seconds = 0;
};

// "=F(1) gives 2, expected 3".
[[nodiscard]] std::string Describe(const Case& one, const Verdict& verdict);

// A report in the XML format of JUnit, which build servers read: a suite under the name, a test a case, and one more
// for the account, whose faults are given in words.
[[nodiscard]] std::string JUnitReport(const std::string& suite, std::span<const Case> cases,
                                      std::span<const Verdict> verdicts,
                                      const std::vector<std::string>& faults);

}  // namespace excelhost
