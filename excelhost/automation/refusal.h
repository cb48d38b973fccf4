// What the simulated application answers when it refuses a call.
#pragma once

#include "excelhost/automation/variant.h"

namespace excelhost::automation {

// Thrown inside the server, and scripted from outside: the HRESULT of a call and, where that is
// DISP_E_EXCEPTION, what goes into the EXCEPINFO.
struct Refusal {
    HRESULT result = E_FAIL;
    WORD code = 0;    // wCode
    SCODE scode = 0;  // scode, looked at by clients when wCode is 0
    Text source;      // left out of the EXCEPINFO when empty, as the next two
    Text description;
    Text helpFile;
    DWORD helpContext = 0;
    bool deferred = false;  // the client gets the texts only from pfnDeferredFillIn
    UINT argument = 0;      // index in rgvarg, for the results that name one

    // A plain HRESULT without a record: a busy host, an unknown member, a wrong type.
    [[nodiscard]] static Refusal Result(HRESULT result);
    // An exception with a description, as the application raises it; its usual number is 0x800A03EC.
    [[nodiscard]] static Refusal Exception(const WCHAR* description, SCODE scode = usualNumber);

    // Fills a zeroed record; the client frees the texts. Throws std::bad_alloc.
    void Fill(EXCEPINFO& info) const;
    void FillTexts(EXCEPINFO& info) const;

    static constexpr SCODE usualNumber = static_cast<SCODE>(0x800A03EC);
};

}  // namespace excelhost::automation
