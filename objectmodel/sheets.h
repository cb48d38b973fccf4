// A workbook's sheets (Excel VBA reference: Sheets object).
#pragma once

#include "objectmodel/types.h"

// Serves worksheets and macro sheets alike. A sheet that isn't a worksheet comes as a Worksheet that holds no
// interface: its first operation raises E_POINTER.
class MsExcel::Sheets {
  public:
    virtual ~Sheets() = default;

    // A new sheet. MissingArgument may stand for each VARIANT; the caller lends them, and temporaries are
    // cleared after the call. `type` is a number of XlSheetType or the path of a template.
    virtual std::shared_ptr<Worksheet> Add(const VARIANT& before, const VARIANT& after, const VARIANT& count,
                                           const VARIANT& type) = 0;
    template <class... Arguments>
    requires kestrolumen::detail::HandsOver<Arguments...> std::shared_ptr<Worksheet> Add(
        Arguments&&... arguments) {
        return Add(kestrolumen::detail::ForTheCall(std::forward<Arguments>(arguments))...);
    }
    virtual LONG GetCount() const = 0;
    // By name or by position from 1.
    virtual std::shared_ptr<Worksheet> GetItem(const CStringW& name) const = 0;
    virtual std::shared_ptr<Worksheet> GetItem(LONG index) const = 0;
};
