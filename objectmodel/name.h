// A defined name (Excel VBA reference: Name object).
#pragma once

#include "objectmodel/types.h"

class MsExcel::Name {
  public:
    virtual ~Name() = default;

    virtual CStringW GetName() const = 0;
    virtual CStringW GetNameLocal() const = 0;
    virtual void PutNameLocal(const CStringW& name) = 0;
    // The formula that the name stands for, as a text that begins with "=": in English, in the user's
    // language, and there in style R1C1. The caller gives away the VARIANT it puts, which is cleared, also
    // when the call fails, and owns those it gets.
    [[nodiscard]] virtual VARIANT GetRefersTo() const = 0;
    virtual void PutRefersTo(VARIANT formula) = 0;
    [[nodiscard]] virtual VARIANT GetRefersToLocal() const = 0;
    [[nodiscard]] virtual VARIANT GetRefersToR1C1Local() const = 0;
    // The worksheet or the workbook that the name belongs to. One of the two is an empty pointer; both are,
    // whatever the cause, when Excel doesn't tell. Neither raises anything.
    virtual std::shared_ptr<Worksheet> GetWorksheet() const noexcept = 0;
    virtual std::shared_ptr<Workbook> GetWorkbook() const noexcept = 0;
    virtual void Delete() = 0;
    virtual bool GetVisible() const = 0;
    virtual void PutVisible(bool visible) = 0;
};
