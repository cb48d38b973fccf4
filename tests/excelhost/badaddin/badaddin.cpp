// An add-in with the exports of the real one and faults that the real one must not have. BAD_ADDIN_FAULT
// chooses one: 1 never hands a result back, 2 hands it back twice, 3 refuses to open, 4 fails in the
// handshake.
#include "excelvalues/xlcall.h"

#include <oleauto.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>
#include <string_view>

namespace {

using Str = std::array<XCHAR, 100>;

EXCEL12PROC Callback() {
    return reinterpret_cast<EXCEL12PROC>(
        reinterpret_cast<void (*)()>(GetProcAddress(GetModuleHandleW(nullptr), "MdCallBack12")));
}

XLOPER12 StringFrom(std::basic_string_view<WCHAR> text, Str& buffer) {
    buffer[0] = static_cast<XCHAR>(text.size());
    std::copy(text.begin(), text.end(), buffer.begin() + 1);
    XLOPER12 record{};
    record.xltype = xltypeStr;
    record.val.str = buffer.data();
    return record;
}

XLOPER12 result;

}  // namespace

extern "C" {
std::int32_t WINAPI xlAutoOpen() {
    return BAD_ADDIN_FAULT == 3 ? 0 : 1;
}
std::int32_t WINAPI xlAutoClose() {
    return 1;
}
void WINAPI UninitializeXlaInformation(std::int32_t) {}

void WINAPI InitializeXlaInformationVB(std::int32_t, std::int32_t, std::int32_t, BSTR*, std::int32_t, BSTR*,
                                       std::int32_t, BSTR*) {
    if (BAD_ADDIN_FAULT == 4) throw std::runtime_error("handshake");
    std::array<Str, 3> buffers;
    std::array<XLOPER12, 3> texts = {StringFrom(BAD_ADDIN_FILE, buffers[0]),
                                     StringFrom(TEXT("NetOutputPrediction"), buffers[1]),
                                     StringFrom(TEXT("QUQQUU"), buffers[2])};
    std::array<LPXLOPER12, 3> operands = {&texts[0], &texts[1], &texts[2]};
    Callback()(xlfRegister, 3, operands.data(), nullptr);
}

LPXLOPER12 WINAPI NetOutputPrediction(LPXLOPER12 a1, LPXLOPER12 a2, LPXLOPER12 a3, LPXLOPER12 a4,
                                      LPXLOPER12 a5) {
    Str buffer;
    XLOPER12 target = StringFrom(TEXT("=Kestrolumen.XLA!NetOutputPredictionVBA"), buffer);
    std::array<LPXLOPER12, 6> operands = {&target, a1, a2, a3, a4, a5};
    Callback()(xlUDF, 6, operands.data(), &result);
    for (int i = 0; BAD_ADDIN_FAULT == 2 && i < 2; ++i) {
        XLOPER12 copy = result;
        LPXLOPER12 freed = &copy;
        Callback()(xlFree, 1, &freed, nullptr);
    }
    if (BAD_ADDIN_FAULT == 2) result.xltype = xltypeNil;
    return &result;
}
}
