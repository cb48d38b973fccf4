// One call into each layer, whose results are told a line each.
#include "addin/addin.h"
#include "automation/automation.h"
#include "errors/vex.h"
#include "excelvalues/xxloper.h"
#include "objectmodel/msexcel.h"
#include "platform/platform.h"
#include "text/text.h"

#include <comdef.h>

#include <cstdio>

// Names that an add-in may well have for itself.
template <class Interface>
class ComPtr;
class TextView;
class CountedText;
class DispatchArgument;

int main() {
    std::printf("text %s\n",
                Utf8FromCStringW(CStringWFormat(TEXT("%s %I64d"), TEXT("\x20AC"), 1LL << 40)).c_str());

    const Matrix matrix = {{1, 2, 3}, {4, 5, 6}};
    SAFEARRAY* array = VbArrayFromMatrix(matrix, 1);
    std::printf("automation %d\n", static_cast<int>(MatrixFromVbArray(array) == matrix));
    DestroyVbArray(&array);
    try {
        static_cast<void>(MatrixFromVbArray(nullptr));
    } catch (const VexArraySizeError& error) {
        std::printf("errors %d\n", static_cast<int>(error.code == VexCode::Sentence));
    }

    std::printf("platform %016llX\n", static_cast<unsigned long long>(Crc64("123456789", 9)));
    try {
        static_cast<void>(MakeApplication(nullptr)->GetVersion());
    } catch (const _com_error& error) {
        std::printf("objectmodel %08X\n", static_cast<unsigned>(error.Error()));
    }

    const XXloperPtr row = XXloperFromDoubles(1, 2, std::vector<double>{1.5, 2.5});
    std::printf("excelvalues %g\n", row->val.array.lparray[1].val.num);
    std::printf("addin %d\n", xlAutoAdd());
}
