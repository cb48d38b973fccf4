// Visual Basic's strings and arrays: making them, reading them, and who frees what.

#include "automation/automation.h"
#include "errors/vex.h"

#include <cstdio>
#include <vector>

namespace {

void Print(const char* topic, const CStringW& text) {
    std::printf("%-18s %s\n", topic, Utf8FromCStringW(text).c_str());
}

void Strings() {
    BSTR text = MakeBstr(TEXT("caf\x00e9"));
    Print("wide text", CStringWFromBstr(text, false));
    AssignBstrW(text, true, TEXT("caf\x00e9"));
    Print("ANSI bytes", CStringWFromBstr(text, true));
    std::printf("%-18s %u\n", "bytes in it", SysStringByteLen(text));
    SysFreeString(text);
}

void Matrices() {
    const Matrix matrix = {{11, 12, 13}, {21, 22, 23}};
    SAFEARRAY* array = VbArrayFromMatrix(matrix, 1);
    // Visual Basic sees a(1 To 2, 1 To 3).
    Print("dimensions", CStringWFromVectorUInt32(VbArrayDimensions(array)));
    {
        const VbArrayLock lock(array);
        const double* const data = static_cast<const double*>(lock.data);
        Print("in memory", CStringWFromVectorDouble({data, data + VbArrayElementCount(array)}));
    }
    Print("read back", CStringWFromVectorDouble(MatrixFromVbArray(array)[1]));
    DestroyVbArray(&array);
}

void TextsInAVariant() {
    VARIANT names = VariantFromVectorCStringW({TEXT("Setosa"), TEXT("Virginica")});
    Print("texts", CStringWFromVectorCStringW(VectorCStringWFromVariantContainingArrayOfBSTR(&names)));
    VariantClear(&names);
}

// Dim a(2): Visual Basic's own array keeps its shape.
void FixedArrays() {
    SAFEARRAYBOUND bound = {3, 0};
    SAFEARRAY* array = SafeArrayCreate(VT_UI1, 1, &bound);
    array->fFeatures |= FADF_FIXEDSIZE;
    VbArrayFromVectorByte(&array, {1, 2, 3}, 0);
    try {
        VbArrayFromVectorByte(&array, {1, 2, 3, 4}, 0);
    } catch (const VexArraySizeError& raised) {
        Print("too many bytes",
              raised.key + CStringWFormat(TEXT(" in %s, code %d"), raised.function.GetString(), raised.code));
    }
    array->fFeatures = static_cast<USHORT>(array->fFeatures & ~FADF_FIXEDSIZE);
    DestroyVbArray(&array);
}

}  // namespace

int main() {
    Strings();
    Matrices();
    TextsInAVariant();
    FixedArrays();
}
