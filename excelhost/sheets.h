// The sheets of a host and its open workbooks, as add-ins reach them.
#pragma once

#include "excelhost/value.h"

#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace excelhost {

// Gives the values of a rectangle of a sheet: one value for one cell, an Array otherwise.
using CellReader = std::function<Value(const Area& area)>;

struct Builtin;

// What open sheets calculate for add-ins: a formula, with or without its "=", and a worksheet function called by its
// number. The calling cell's sheet is what they see.
struct SheetEvaluator {
    std::function<Value(TextView formula)> evaluate;
    std::function<Value(const Builtin& function, std::span<const Value> arguments)> call;
};

struct OpenSheet {
    IDSHEET id = 0;
    Text name;  // "[Book1.xlsx]Sheet1"
    CellReader reader;
};

// A function of a workbook. It sees the very records that the add-in passed to xlUDF, in their order, without
// the target text. A standard exception that leaves it is a run-time error in the workbook's code: the result
// is #VALUE!.
using WorkbookFunction = std::function<Value(std::span<const XLOPER12* const> arguments)>;

// Not locked: who shares it locks it.
class Sheets {
  public:
    // A sheet of the same id is replaced; the first one is the current one.
    void Add(OpenSheet sheet);
    void SetCurrent(IDSHEET id) noexcept { current_ = id; }
    [[nodiscard]] IDSHEET Current() const noexcept { return current_; }
    // The current one for 0; null when there is none.
    [[nodiscard]] const OpenSheet* Find(IDSHEET id) const;
    // By "[Book1.xlsx]Sheet1" or "Sheet1".
    [[nodiscard]] const OpenSheet* FindByName(TextView name) const;

  private:
    std::vector<OpenSheet> sheets_;
    IDSHEET current_ = 0;
};

// Not locked: who shares it locks it. Names count without regard to case.
class Workbooks {
  public:
    void SetFunction(TextView workbook, TextView function, WorkbookFunction body);
    void Close(TextView workbook);
    [[nodiscard]] bool IsOpen(TextView workbook) const;
    // Null when the workbook isn't open or has no such function.
    [[nodiscard]] std::shared_ptr<const WorkbookFunction> Find(TextView workbook, TextView function) const;

  private:
    struct Function {
        Text name;
        std::shared_ptr<const WorkbookFunction> body;
    };
    struct Workbook {
        Text name;
        std::vector<Function> functions;
    };
    std::vector<Workbook> workbooks_;
};

}  // namespace excelhost
