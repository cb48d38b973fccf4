#include "automation/vbstrings.h"

#include "automation/bstr.h"
#include "errors/vex.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int owningFeatures = FADF_BSTR | FADF_UNKNOWN | FADF_DISPATCH | FADF_VARIANT;

// A new array on its way to the caller.
struct NewVbArray {
    SAFEARRAY* array = nullptr;

    NewVbArray() = default;
    ~NewVbArray() { DestroyVbArray(&array); }
    NewVbArray(const NewVbArray&) = delete;
    NewVbArray& operator=(const NewVbArray&) = delete;

    [[nodiscard]] SAFEARRAY* Release() noexcept { return std::exchange(array, nullptr); }
};

const WCHAR* TextOf(const CStringW& string) noexcept {
    return string.GetString();
}

const WCHAR* TextOf(const StdWString& string) noexcept {
    return string.c_str();
}

// Pointers go over what the array holds, so that has to be something that pointers may go over: ReDimVbArray
// looks at the size of an element only.
void ReDimForPointers(SAFEARRAY*& array, std::span<const std::uint32_t> sizes, std::uint16_t features,
                      std::int32_t lowerBound, bool (*suits)(int owned)) {
    if (array != nullptr && !suits(array->fFeatures & owningFeatures)) DestroyVbArray(&array);
    ReDimVbArray(array, sizes, sizeof(BSTR), features, lowerBound);
    if (!suits(array->fFeatures & owningFeatures)) {
        throw VexArraySizeError("ReDimVbArray", VexCode::FixedArrayElementSize);
    }
}

template <typename String>
void AssignStrings(SAFEARRAY*& array, bool ansiBytes, const std::vector<String>& strings,
                   std::int32_t lowerBound) {
    const std::uint32_t count = kestrolumen::detail::ArraySize(strings.size());
    ReDimForPointers(array, {&count, 1}, FADF_BSTR, lowerBound, [](int owned) { return owned == FADF_BSTR; });
    if (count == 0) return;
    const VbArrayLock lock(array);
    auto* next = static_cast<BSTR*>(lock.data);
    if (next == nullptr) throw VexOutOfMemory("ReDimVbArray", VexCode::ArrayAllocation);
    for (const String& string : strings) AssignBstrW(*next++, ansiBytes, TextOf(string));
}

// Stores `bstr`, or where the array owns its strings a copy of it.
void PutBstr(SAFEARRAY* array, LONG* indices, BSTR bstr) {
    const bool copies = (array->fFeatures & FADF_BSTR) != 0;
    const HRESULT stored = SafeArrayPutElement(array, indices, copies ? bstr : static_cast<void*>(&bstr));
    if (copies || FAILED(stored)) SysFreeString(bstr);
    if (stored == E_OUTOFMEMORY) throw VexOutOfMemory("AssignBstrW", VexCode::BstrAllocation);
    if (FAILED(stored)) throw VexArraySizeError("ReDimVbArray", VexCode::FixedArraySize);
}

// Whether each dimension has so many indices that count from `lowerBound`.
bool HasIndices(const SAFEARRAY& array, std::span<const std::uint32_t> sizes,
                std::int32_t lowerBound) noexcept {
    return std::ranges::equal(std::span(array.rgsabound, array.cDims), sizes,
                              [first = std::int64_t{lowerBound}](const SAFEARRAYBOUND& bound, auto size) {
                                  return bound.lLbound <= first &&
                                         first + size <= std::int64_t{bound.lLbound} + bound.cElements;
                              });
}

// The strings of an array that holds BSTRs or Variants, in place and under a lock.
class StringElements {
  public:
    explicit StringElements(SAFEARRAY* array) noexcept : lock_(array) {
        if (array == nullptr || lock_.data == nullptr) return;
        inVariants_ = (array->fFeatures & FADF_VARIANT) != 0;
        const std::size_t size = inVariants_ ? sizeof(VARIANT) : sizeof(BSTR);
        if (array->cbElements == size && MayBeStrings(array)) count_ = VbArrayLength(array);
    }

    [[nodiscard]] BSTR At(std::int64_t index) const {
        constexpr const char* raiser = "CStringWFromBstrArray";
        if (index < 0 || index >= count_) throw VexOutOfMemory(raiser, VexCode::ArrayElementFetch);
        if (!inVariants_) return static_cast<const BSTR*>(lock_.data)[index];
        const VARIANT& variant = static_cast<const VARIANT*>(lock_.data)[index];
        if (variant.vt == VT_BSTR) return variant.bstrVal;
        throw VexExpectedString(raiser, VexCode::ArrayElementNotString,
                                CStringWFormat(TEXT("%8.8lX."), std::uint32_t{variant.vt}));
    }

  private:
    // An array that doesn't know its type may hold strings. One whose features say that it has a type need
    // not have it written down.
    static bool MayBeStrings(SAFEARRAY* array) noexcept {
        VARTYPE type = VT_EMPTY;
        return (array->fFeatures & (FADF_BSTR | FADF_VARIANT)) != 0 ||
               FAILED(SafeArrayGetVartype(array, &type)) || type == VT_EMPTY || type == VT_BSTR;
    }

    VbArrayLock lock_;
    bool inVariants_ = false;
    std::uint32_t count_ = 0;
};

template <typename String>
std::vector<String> StringsOf(SAFEARRAY* array, bool ansiBytes, String (*textOf)(BSTR, bool)) {
    std::vector<String> strings(VbArrayLength(array));
    const StringElements elements(array);
    for (std::size_t i = 0; i < strings.size(); ++i) {
        strings[i] = textOf(elements.At(static_cast<std::int64_t>(i)), ansiBytes);
    }
    return strings;
}

[[noreturn]] void Refuse(const char* raiser) {
    throw VexParameterError(raiser, VexCode::Sentence, CStringW());
}

}  // namespace

SAFEARRAY* VbArrayFromVectorCStringW(const std::vector<CStringW>& strings, bool ansiBytes,
                                     std::int32_t lowerBound) {
    NewVbArray made;
    AssignStrings(made.array, ansiBytes, strings, lowerBound);
    return made.Release();
}

void AssignVbArrayFromVectorCStringW(const std::vector<CStringW>& strings, bool ansiBytes,
                                     std::int32_t lowerBound, SAFEARRAY*& array) {
    if (strings.empty()) return DestroyVbArray(&array);
    AssignStrings(array, ansiBytes, strings, lowerBound);
}

void AssignVbArrayFromVectorWString(bool ansiBytes, SAFEARRAY*& array, const std::vector<StdWString>& strings,
                                    std::int32_t lowerBound) {
    AssignStrings(array, ansiBytes, strings, lowerBound);
}

void VbArrayFromPairs(bool ansiBytes, SAFEARRAY*& array,
                      const std::vector<std::pair<StdWString, StdWString>>& pairs, std::int32_t lowerBound) {
    const std::uint32_t sizes[] = {2, kestrolumen::detail::ArraySize(pairs.size())};
    const std::int64_t end = std::int64_t{lowerBound} + std::max(sizes[0], sizes[1]);
    // Systems look for an index below the sum of lower bound and count, in 32 bits.
    if (!std::in_range<LONG>(end)) throw VexOutOfMemory("ReDimVbArray", VexCode::ArrayAllocation);
    if (array != nullptr && array->cDims == 2 && array->rgsabound[1].lLbound != lowerBound) {
        DestroyVbArray(&array);
    }
    ReDimForPointers(array, sizes, 0, lowerBound, [](int owned) { return owned == 0 || owned == FADF_BSTR; });
    if (!HasIndices(*array, sizes, lowerBound)) {
        throw VexArraySizeError("ReDimVbArray", VexCode::FixedArraySize);
    }
    LONG row = lowerBound;
    for (const auto& [first, second] : pairs) {
        LONG column = lowerBound;
        for (const StdWString* const text : {&first, &second}) {
            BSTR bstr = nullptr;
            AssignBstrW(bstr, ansiBytes, *text);
            LONG indices[] = {row, column++};
            PutBstr(array, indices, bstr);
        }
        ++row;
    }
}

VARIANT VariantFromVectorCStringW(const std::vector<CStringW>& strings) {
    NewVbArray made;
    if (!strings.empty()) AssignStrings(made.array, false, strings, 1);
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = VT_ARRAY | VT_BSTR;
    variant.parray = made.Release();
    return variant;
}

void AssignVariantFromVectorCStringW(const std::vector<CStringW>& strings, VARIANT& variant) {
    if (VariantClear(&variant) == DISP_E_ARRAYISLOCKED) {
        throw VexOutOfMemory("ReDimVbArray", VexCode::ArrayAllocation);
    }
    variant.vt = VT_ARRAY | VT_BSTR;
    variant.parray = nullptr;
    if (!strings.empty()) AssignStrings(variant.parray, false, strings, 1);
}

CStringW CStringWFromBstrArray(SAFEARRAY* array, bool ansiBytes, std::int32_t index) {
    return CStringWFromBstr(StringElements(array).At(index), ansiBytes);
}

CStringA CStringAFromBstrArray(SAFEARRAY* array, bool ansiBytes, std::int32_t index) {
    return CStringAFromBstr(StringElements(array).At(index), ansiBytes);
}

std::vector<CStringW> VectorCStringWFromBstrArray(SAFEARRAY* array, bool ansiBytes) {
    return StringsOf(array, ansiBytes, CStringWFromBstr);
}

std::vector<StdWString> VectorWStringFromBstrArray(SAFEARRAY* array, bool ansiBytes) {
    return StringsOf(array, ansiBytes, StdWStringFromBstr);
}

std::vector<CStringW> VectorCStringWFromVariantContainingArrayOfBSTR(const VARIANT* variant) {
    constexpr const char* raiser = "VectorCStringWFromVariantContainingArrayOfBSTR";
    if (variant == nullptr) return {};
    if (variant->vt != (VT_ARRAY | VT_BSTR)) Refuse(raiser);
    SAFEARRAY* const array = variant->parray;
    if (array == nullptr) return {};
    if (array->cDims != 1 || array->cbElements != sizeof(BSTR)) Refuse(raiser);

    std::vector<CStringW> strings(VbArrayLength(array));
    const VbArrayLock lock(array);
    const auto* next = static_cast<const BSTR*>(lock.data);
    if (next == nullptr) return strings;
    for (CStringW& string : strings) string = CStringWFromBstr(*next++, false);
    return strings;
}

std::vector<CStringW> VectorCStringWFromVariantContainingArrayOfVariantContainingBSTR(
    const VARIANT* variant) {
    constexpr const char* raiser = "VectorCStringWFromVariantContainingArrayOfVariantContainingBSTR";
    if (variant == nullptr) return {};
    if (variant->vt != (VT_ARRAY | VT_VARIANT)) Refuse(raiser);
    SAFEARRAY* const array = variant->parray;
    if (array == nullptr) return {};
    const std::vector<std::uint32_t> counts = VbArrayDimensions(array);
    const bool isRow = counts.size() == 2 && std::ranges::count(counts, 1U) > 0;
    if ((counts.size() != 1 && !isRow) || array->cbElements != sizeof(VARIANT)) Refuse(raiser);

    std::vector<CStringW> strings(VbArrayElementCount(array));
    const VbArrayLock lock(array);
    const auto* next = static_cast<const VARIANT*>(lock.data);
    if (next == nullptr) return strings;
    for (CStringW& string : strings) {
        const VARIANT& element = *next++;
        if (element.vt != VT_BSTR && element.vt != VT_EMPTY) Refuse(raiser);
        if (element.vt == VT_BSTR) string = CStringWFromBstr(element.bstrVal, false);
    }
    return strings;
}
