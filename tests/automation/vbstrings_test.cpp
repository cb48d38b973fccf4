// Arrays of strings: who frees what, which arrays are kept, and what is refused.
#include "automation/arraytest.h"

#include <cstring>
#include <random>

namespace {

using Strings = std::vector<CStringW>;

const Strings three = {TEXT("one"), TEXT(""), TEXT("caf\xE9 \x20AC")};

std::string BytesOf(BSTR text) {
    return {reinterpret_cast<const char*>(text), SysStringByteLen(text)};
}

std::vector<std::string> BytesOf(const SAFEARRAY* array) {
    std::vector<std::string> bytes;
    const auto* const first = static_cast<const BSTR*>(array->pvData);
    for (const BSTR text : std::span(first, VbArrayElementCount(array))) bytes.push_back(BytesOf(text));
    return bytes;
}

std::string Wide(const CStringW& text) {
    return {reinterpret_cast<const char*>(text.GetString()), static_cast<std::size_t>(text.GetLength()) * 2};
}

std::vector<std::string> Expected(const Strings& strings, bool ansiBytes) {
    std::vector<std::string> bytes;
    for (const CStringW& text : strings) {
        bytes.push_back(ansiBytes ? std::string(CStringA(text).GetString()) : Wide(text));
    }
    return bytes;
}

std::vector<StdWString> Standard(const Strings& strings) {
    return {strings.begin(), strings.end()};
}

TEST(VbStrings, ComeBackAsTheyWentIn) {
    for (const bool ansiBytes : {false, true}) {
        for (const Strings& strings : {Strings{}, Strings{TEXT("x")}, three}) {
            const TestArray array(VbArrayFromVectorCStringW(strings, ansiBytes, -2));
            ASSERT_NE(array.array, nullptr);
            EXPECT_EQ(array->fFeatures, FADF_BSTR);
            EXPECT_EQ(array->cbElements, sizeof(BSTR));
            EXPECT_EQ(array->rgsabound[0].lLbound, -2);
            EXPECT_EQ(BytesOf(array.array), Expected(strings, ansiBytes));
            EXPECT_EQ(VectorCStringWFromBstrArray(array, ansiBytes), strings);
            EXPECT_EQ(VectorWStringFromBstrArray(array, ansiBytes), Standard(strings));
            for (std::size_t i = 0; i < strings.size(); ++i) {
                const auto index = static_cast<std::int32_t>(i);
                EXPECT_EQ(CStringWFromBstrArray(array, ansiBytes, index), strings[i]);
                EXPECT_EQ(CStringAFromBstrArray(array, ansiBytes, index), CStringA(strings[i]));
            }
        }
    }
}

TEST(VbStrings, GoIntoASlotWhoseArrayIsKeptWhereItFits) {
    for (const bool ansiBytes : {false, true}) {
        TestArray array;
        AssignVbArrayFromVectorCStringW(three, ansiBytes, 1, array.array);
        SAFEARRAY* const before = array.array;
        EXPECT_EQ(BytesOf(array.array), Expected(three, ansiBytes));
        AssignVbArrayFromVectorCStringW({TEXT("a"), TEXT("b"), TEXT("c"), TEXT("d")}, ansiBytes, 0,
                                        array.array);
        EXPECT_EQ(array.array, before);
        EXPECT_EQ(VbArrayLength(array), 4u);
        EXPECT_EQ(array->rgsabound[0].lLbound, 0);
        AssignVbArrayFromVectorWString(ansiBytes, array.array, Standard(three), 1);
        EXPECT_EQ(array.array, before);
        EXPECT_EQ(BytesOf(array.array), Expected(three, ansiBytes));

        AssignVbArrayFromVectorWString(ansiBytes, array.array, {}, 1);
        ASSERT_EQ(array.array, before);
        EXPECT_EQ(VbArrayLength(array), 0u);
        AssignVbArrayFromVectorCStringW({}, ansiBytes, 1, array.array);
        EXPECT_EQ(array.array, nullptr);
    }
}

TEST(VbStrings, FillAFixedArrayFromItsStart) {
    TestArray fixed(MakeFixedArray(VT_BSTR, {3}));
    AssignVbArrayFromVectorCStringW(three, false, 1, fixed.array);
    AssignVbArrayFromVectorCStringW({TEXT("new")}, false, 1, fixed.array);
    EXPECT_EQ(VectorCStringWFromBstrArray(fixed, false), (Strings{TEXT("new"), three[1], three[2]}));
    AssignVbArrayFromVectorCStringW({}, false, 1, fixed.array);
    EXPECT_EQ(VbArrayLength(fixed), 3u);
    ExpectRaised("VexArraySizeError", "ReDimVbArray", VexCode::FixedArraySize, {},
                 [&] { AssignVbArrayFromVectorCStringW(Strings(4), false, 1, fixed.array); });
}

TEST(VbStrings, ReplaceAnArrayOfAnythingElse) {
    const VARTYPE pointerSized = sizeof(BSTR) == 4 ? VT_I4 : VT_I8;
    TestArray array(MakeArray(pointerSized, {3}));
    std::memset(array->pvData, 0x5A, 3 * sizeof(BSTR));
    AssignVbArrayFromVectorCStringW(three, false, 1, array.array);
    EXPECT_EQ(array->fFeatures, FADF_BSTR);
    EXPECT_EQ(VectorCStringWFromBstrArray(array, false), three);

    TestArray fixed(MakeFixedArray(pointerSized, {3}));
    ExpectRaised("VexArraySizeError", "ReDimVbArray", VexCode::FixedArrayElementSize, {},
                 [&] { AssignVbArrayFromVectorCStringW(three, false, 1, fixed.array); });
    EXPECT_EQ(fixed.Data<void*>(), std::vector<void*>(3));
}

TEST(VbStrings, AsVariantStartAtOne) {
    VARIANT variant = VariantFromVectorCStringW(three);
    EXPECT_EQ(variant.vt, VT_ARRAY | VT_BSTR);
    EXPECT_EQ(variant.parray->rgsabound[0].lLbound, 1);
    EXPECT_EQ(variant.parray->fFeatures, FADF_BSTR);
    EXPECT_EQ(VectorCStringWFromVariantContainingArrayOfBSTR(&variant), three);

    AssignVariantFromVectorCStringW({TEXT("new"), TEXT("ones")}, variant);
    EXPECT_EQ(VectorCStringWFromVariantContainingArrayOfBSTR(&variant), (Strings{TEXT("new"), TEXT("ones")}));
    AssignVariantFromVectorCStringW({}, variant);
    EXPECT_EQ(variant.vt, VT_ARRAY | VT_BSTR);
    EXPECT_EQ(variant.parray, nullptr);
    VariantClear(&variant);

    variant = VariantFromCStringW(TEXT("what was there"));
    AssignVariantFromVectorCStringW(three, variant);
    EXPECT_EQ(VectorCStringWFromVariantContainingArrayOfBSTR(&variant), three);
    VariantClear(&variant);
    const VARIANT none = VariantFromVectorCStringW({});
    EXPECT_EQ(none.vt, VT_ARRAY | VT_BSTR);
    EXPECT_EQ(none.parray, nullptr);
}

TEST(VbStrings, ALockedVariantIsNotAssigned) {
    VARIANT variant = VariantFromVectorCStringW(three);
    SAFEARRAY* const locked = variant.parray;
    {
        const VbArrayLock lock(locked);
        ExpectRaised("VexOutOfMemory", "ReDimVbArray", VexCode::ArrayAllocation, {},
                     [&] { AssignVariantFromVectorCStringW({TEXT("new")}, variant); });
        EXPECT_EQ(BytesOf(locked), Expected(three, false));
    }
    EXPECT_EQ(SafeArrayDestroy(locked), S_OK);
}

TEST(VbStrings, AnElementIsFetchedByItsPlace) {
    const TestArray bstrs(VbArrayFromVectorCStringW({TEXT("first"), TEXT("second")}, false, 1));
    const TestArray variants(MakeArray(VT_VARIANT, {3}, 1));
    auto* const elements = static_cast<VARIANT*>(variants->pvData);
    elements[0] = VariantFromCStringW(TEXT("first"));
    elements[1].vt = VT_BSTR;
    elements[2].vt = VT_R8;
    EXPECT_EQ(CStringWFromBstrArray(bstrs, false, 0), TEXT("first"));
    EXPECT_EQ(CStringWFromBstrArray(variants, false, 0), TEXT("first"));
    EXPECT_EQ(CStringWFromBstrArray(variants, false, 1), TEXT("")) << "a null BSTR";
    ExpectRaised("VexExpectedString", "CStringWFromBstrArray", VexCode::ArrayElementNotString,
                 {TEXT("00000005.")}, [&] { (void)CStringWFromBstrArray(variants, false, 2); });
    elements[2].vt = VT_BYREF | VT_BSTR;
    ExpectRaised("VexExpectedString", "CStringWFromBstrArray", VexCode::ArrayElementNotString,
                 {TEXT("00004008.")}, [&] { (void)VectorCStringWFromBstrArray(variants, false); });
    elements[2].vt = VT_EMPTY;

    const TestArray matrix(MakeArray(VT_BSTR, {2, 2}));
    const TestArray doubles(MakeArray(VT_R8, {2}));
    const TestArray integers(MakeArray(sizeof(BSTR) == 4 ? VT_I4 : VT_I8, {2}));
    const struct {
        SAFEARRAY* array;
        std::int32_t index;
    } outside[] = {{bstrs, 2},  {bstrs, -1},  {bstrs, INT32_MAX}, {bstrs, INT32_MIN}, {variants, 3},
                   {matrix, 0}, {doubles, 0}, {integers, 0},      {nullptr, 0}};
    for (const auto& one : outside) {
        ExpectRaised("VexOutOfMemory", "CStringWFromBstrArray", VexCode::ArrayElementFetch, {},
                     [&] { (void)CStringWFromBstrArray(one.array, false, one.index); });
        ExpectRaised("VexOutOfMemory", "CStringWFromBstrArray", VexCode::ArrayElementFetch, {},
                     [&] { (void)CStringAFromBstrArray(one.array, false, one.index); });
    }
    EXPECT_TRUE(VectorCStringWFromBstrArray(nullptr, false).empty());
    EXPECT_TRUE(VectorWStringFromBstrArray(matrix, false).empty());
}

TEST(VbStrings, PairsAreRowsOfTwoThatOwnNothing) {
    const std::vector<std::pair<StdWString, StdWString>> pairs = {
        {TEXT("k1"), TEXT("v1")}, {TEXT("k2"), TEXT("")}, {TEXT("k3"), TEXT("caf\xE9")}};
    for (const bool ansiBytes : {false, true}) {
        TestArray array;
        VbArrayFromPairs(ansiBytes, array.array, pairs, 1);
        EXPECT_EQ(VbArrayDimensions(array), (std::vector<std::uint32_t>{3, 2}));
        EXPECT_EQ(array->fFeatures, 0u);
        for (LONG r = 0; r < 3; ++r) {
            for (LONG c = 0; c < 2; ++c) {
                LONG indices[] = {r + 1, c + 1};
                BSTR text = nullptr;
                ASSERT_EQ(SafeArrayGetElement(array, indices, &text), S_OK);
                const auto& [first, second] = pairs[static_cast<std::size_t>(r)];
                EXPECT_EQ(StdWStringFromBstr(text, ansiBytes), c == 0 ? first : second);
                SysFreeString(text);
            }
        }
        VbArrayFromPairs(ansiBytes, array.array, {}, 1);
        EXPECT_EQ(VbArrayDimensions(array), (std::vector<std::uint32_t>{0, 2}));
    }
}

TEST(VbStrings, PairsGoIntoAnArrayThatOwnsItsStringsAsCopies) {
    TestArray fixed(MakeFixedArray(VT_BSTR, {1, 2}, 1));
    VbArrayFromPairs(false, fixed.array, {{TEXT("old"), TEXT("pair")}}, 1);
    VbArrayFromPairs(false, fixed.array, {{TEXT("new"), TEXT("")}}, 1);
    EXPECT_EQ(BytesOf(fixed.array), (std::vector<std::string>{Wide(TEXT("new")), ""}));
    ExpectRaised("VexArraySizeError", "VbArrayFromPairs", VexCode::FixedArraySize, {}, [&] {
        VbArrayFromPairs(false, fixed.array, {{TEXT("a"), TEXT("b")}}, 0);
    });
    ExpectRaised("VexArraySizeError", "ReDimVbArray", VexCode::FixedArraySize, {}, [&] {
        VbArrayFromPairs(false, fixed.array, {{TEXT("a"), TEXT("b")}, {}}, 1);
    });
}

// --- arrays in VARIANTs
// --------------------------------------------------------------------------------------

using VariantReader = Strings (*)(const VARIANT*);

void ExpectRefused(VariantReader read, const char* name, VARTYPE type, SAFEARRAY* array) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = type;
    variant.parray = array;
    ExpectRaised("VexParameterError", name, VexCode::Sentence, {CStringW()}, [&] { (void)read(&variant); });
    EXPECT_EQ(array == nullptr ? 0 : array->cLocks, 0u);
}

Strings Read(VariantReader read, VARTYPE type, SAFEARRAY* array) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = type;
    variant.parray = array;
    return read(&variant);
}

TEST(VariantStrings, OfBstrsTakeOneDimensionOfThatTypeOnly) {
    constexpr VariantReader read = VectorCStringWFromVariantContainingArrayOfBSTR;
    constexpr const char* name = "VectorCStringWFromVariantContainingArrayOfBSTR";
    EXPECT_TRUE(read(nullptr).empty());
    EXPECT_TRUE(Read(read, VT_ARRAY | VT_BSTR, nullptr).empty());
    const TestArray array(VbArrayFromVectorCStringW({TEXT("a"), TEXT("b")}, false, 5));
    SysFreeString(std::exchange(static_cast<BSTR*>(array->pvData)[1], nullptr));
    EXPECT_EQ(Read(read, VT_ARRAY | VT_BSTR, array), (Strings{TEXT("a"), TEXT("")}));

    for (const int type :
         {int{VT_BSTR}, VT_ARRAY | VT_VARIANT, VT_ARRAY | VT_BSTR | VT_BYREF, int{VT_EMPTY}}) {
        ExpectRefused(read, name, static_cast<VARTYPE>(type), nullptr);
    }
    const TestArray matrix(MakeArray(VT_BSTR, {1, 2}));
    ExpectRefused(read, name, VT_ARRAY | VT_BSTR, matrix);
    const TestArray bytes(MakeArray(VT_UI1, {2}));
    ExpectRefused(read, name, VT_ARRAY | VT_BSTR, bytes);
}

TEST(VariantStrings, OfVariantsTakeASingleRowOrColumnToo) {
    constexpr VariantReader read = VectorCStringWFromVariantContainingArrayOfVariantContainingBSTR;
    constexpr const char* name = "VectorCStringWFromVariantContainingArrayOfVariantContainingBSTR";
    constexpr VARTYPE type = VT_ARRAY | VT_VARIANT;
    EXPECT_TRUE(read(nullptr).empty());
    EXPECT_TRUE(Read(read, type, nullptr).empty());
    for (const auto& shape : {std::initializer_list<ULONG>{3}, {1, 3}, {3, 1}}) {
        const TestArray array(MakeArray(VT_VARIANT, shape, 1));
        auto* const elements = static_cast<VARIANT*>(array->pvData);
        elements[0] = VariantFromCStringW(TEXT("a"));
        elements[1].vt = VT_BSTR;
        elements[2] = VariantFromCStringW(TEXT("c"));
        EXPECT_EQ(Read(read, type, array), (Strings{TEXT("a"), TEXT(""), TEXT("c")}));
        VariantClear(&elements[1]);
        EXPECT_EQ(Read(read, type, array), (Strings{TEXT("a"), TEXT(""), TEXT("c")}));
        elements[1].vt = VT_R8;
        elements[1].dblVal = 1.5;
        ExpectRefused(read, name, type, array);
    }
    const TestArray none(MakeArray(VT_VARIANT, {1, 0}));
    EXPECT_TRUE(Read(read, type, none).empty());
    const TestArray one(MakeArray(VT_VARIANT, {1, 1}));
    EXPECT_EQ(Read(read, type, one), Strings(1));
    for (const auto& shape : {std::initializer_list<ULONG>{2, 3}, {0, 0}, {1, 1, 1}}) {
        const TestArray array(MakeArray(VT_VARIANT, shape));
        ExpectRefused(read, name, type, array);
    }
    ExpectRefused(read, name, VT_ARRAY | VT_BSTR, nullptr);
    ExpectRefused(read, name, VT_VARIANT | VT_BYREF, nullptr);
    const TestArray bstrs(MakeArray(VT_BSTR, {2}));
    ExpectRefused(read, name, type, bstrs);
}

}  // namespace
