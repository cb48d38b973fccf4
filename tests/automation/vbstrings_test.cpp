// Arrays of strings: who frees what, which arrays are kept, and what is refused.
#include "automation/arraytest.h"

#include <cstring>
#include <utility>

namespace {

using Strings = std::vector<CStringW>;

const Strings three = {TEXT("one"), TEXT(""), TEXT("caf\xE9 \x20AC")};

std::vector<std::string> Contents(const SAFEARRAY* array) {
    std::vector<std::string> bytes;
    const auto* const first = static_cast<const BSTR*>(array->pvData);
    for (const BSTR text : std::span(first, VbArrayElementCount(array))) bytes.push_back(BytesOf(text));
    return bytes;
}

std::vector<std::string> Expected(const Strings& strings, bool ansiBytes) {
    std::vector<std::string> bytes;
    for (const CStringW& text : strings) {
        bytes.push_back(ansiBytes ? std::string(CStringA(text).GetString()) : Wide(text.GetString()));
    }
    return bytes;
}

TEST(VbStrings, ComeBackAsTheyWentIn) {
    for (const bool ansiBytes : {false, true}) {
        for (const Strings& strings : {Strings{}, three}) {
            const TestArray array(VbArrayFromVectorCStringW(strings, ansiBytes, -2));
            EXPECT_EQ(array->fFeatures, FADF_BSTR);
            EXPECT_EQ(array->rgsabound[0].lLbound, -2);
            EXPECT_EQ(Contents(array), Expected(strings, ansiBytes));
            EXPECT_EQ(VectorCStringWFromBstrArray(array, ansiBytes), strings);
            EXPECT_EQ(VectorWStringFromBstrArray(array, ansiBytes),
                      std::vector<StdWString>(strings.begin(), strings.end()));
        }
        const TestArray array(VbArrayFromVectorCStringW(three, ansiBytes, 1));
        EXPECT_EQ(CStringWFromBstrArray(array, ansiBytes, 2), three[2]);
        EXPECT_EQ(CStringAFromBstrArray(array, ansiBytes, 2), CStringA(three[2]));
    }
}

TEST(VbStrings, GoIntoASlotWhoseArrayIsKeptWhereItFits) {
    for (const bool ansiBytes : {false, true}) {
        TestArray array;
        AssignVbArrayFromVectorCStringW(three, ansiBytes, 1, array.array);
        SAFEARRAY* const before = array.array;
        AssignVbArrayFromVectorCStringW(Strings(4), ansiBytes, 0, array.array);
        EXPECT_EQ(array.array, before);
        EXPECT_EQ(array->rgsabound[0].lLbound, 0);
        AssignVbArrayFromVectorWString(ansiBytes, array.array, {three.begin(), three.end()}, 1);
        EXPECT_EQ(array.array, before);
        EXPECT_EQ(Contents(array), Expected(three, ansiBytes));
        AssignVbArrayFromVectorWString(ansiBytes, array.array, {}, 1);
        EXPECT_EQ(VbArrayLength(array), 0u);
        AssignVbArrayFromVectorCStringW({}, ansiBytes, 1, array.array);
        EXPECT_EQ(array.array, nullptr);
    }
    TestArray fixed(VT_BSTR, {3}, 0, FADF_FIXEDSIZE);
    AssignVbArrayFromVectorCStringW(three, false, 1, fixed.array);
    AssignVbArrayFromVectorCStringW({TEXT("new")}, false, 1, fixed.array);
    AssignVbArrayFromVectorCStringW({}, false, 1, fixed.array);
    EXPECT_EQ(VectorCStringWFromBstrArray(fixed, false), (Strings{TEXT("new"), three[1], three[2]}));
    EXPECT_EQ(Raised([&] { AssignVbArrayFromVectorCStringW(Strings(4), false, 1, fixed.array); }),
              "VexArraySizeError ReDimVbArray 2632");
}

TEST(VbStrings, ReplaceAnArrayOfAnythingElse) {
    const VARTYPE pointerSized = sizeof(BSTR) == 4 ? VT_I4 : VT_I8;
    TestArray array(pointerSized, {3});
    std::memset(array->pvData, 0x5A, 3 * sizeof(BSTR));
    AssignVbArrayFromVectorCStringW(three, false, 1, array.array);
    EXPECT_EQ(VectorCStringWFromBstrArray(array, false), three);
    TestArray fixed(pointerSized, {3}, 0, FADF_FIXEDSIZE);
    EXPECT_EQ(Raised([&] { AssignVbArrayFromVectorCStringW(three, false, 1, fixed.array); }),
              "VexArraySizeError ReDimVbArray 2633");
    EXPECT_EQ(fixed.Data<void*>(), std::vector<void*>(3));
}

TEST(VbStrings, AsVariantStartAtOne) {
    VARIANT variant = VariantFromCStringW(TEXT("what was there"));
    for (const Strings& strings : {three, Strings{TEXT("new")}, Strings{}, three}) {
        AssignVariantFromVectorCStringW(strings, variant);
        EXPECT_EQ(variant.vt, VT_ARRAY | VT_BSTR);
        EXPECT_EQ(variant.parray == nullptr, strings.empty());
        EXPECT_EQ(VectorCStringWFromVariantContainingArrayOfBSTR(&variant), strings);
    }
    EXPECT_EQ(variant.parray->rgsabound[0].lLbound, 1);
    EXPECT_EQ(VariantFromVectorCStringW({}).parray, nullptr);
    const TestArray made(VariantFromVectorCStringW(three).parray);
    EXPECT_EQ(Contents(made), Expected(three, false));
    EXPECT_EQ(made->rgsabound[0].lLbound, 1);
    const TestArray locked(variant.parray);
    const VbArrayLock lock(locked);
    EXPECT_EQ(Raised([&] { AssignVariantFromVectorCStringW({TEXT("new")}, variant); }),
              "VexOutOfMemory ReDimVbArray 2634");
    EXPECT_EQ(Contents(locked), Expected(three, false));
}

TEST(VbStrings, AnElementIsFetchedByItsPlace) {
    const TestArray bstrs(VbArrayFromVectorCStringW({TEXT("first"), TEXT("second")}, false, 1));
    const TestArray variants(VT_VARIANT, {3}, 1);
    auto* const elements = static_cast<VARIANT*>(variants->pvData);
    elements[0] = VariantFromCStringW(TEXT("first"));
    elements[1].vt = VT_BSTR;
    elements[2].vt = VT_R8;
    EXPECT_EQ(CStringWFromBstrArray(variants, false, 0), TEXT("first"));
    EXPECT_EQ(CStringWFromBstrArray(variants, false, 1), TEXT("")) << "a null BSTR";
    EXPECT_EQ(Raised([&] { (void)VectorCStringWFromBstrArray(variants, false); }),
              "VexExpectedString CStringWFromBstrArray 2637 <00000005.>");

    const TestArray matrix(VT_BSTR, {2, 2});
    const TestArray doubles(VT_R8, {2});
    const TestArray integers(sizeof(BSTR) == 4 ? VT_I4 : VT_I8, {2});
    const std::pair<SAFEARRAY*, std::int32_t> outside[] = {{bstrs, 2},  {bstrs, INT32_MIN}, {variants, 3},
                                                           {matrix, 0}, {doubles, 0},       {integers, 0},
                                                           {nullptr, 0}};
    for (const auto& each : outside) {
        EXPECT_EQ(Raised([&] { (void)CStringWFromBstrArray(each.first, false, each.second); }),
                  "VexOutOfMemory CStringWFromBstrArray 2636");
        EXPECT_EQ(Raised([&] { (void)CStringAFromBstrArray(each.first, true, each.second); }),
                  "VexOutOfMemory CStringWFromBstrArray 2636");
    }
    EXPECT_TRUE(VectorCStringWFromBstrArray(nullptr, false).empty());
    EXPECT_TRUE(VectorWStringFromBstrArray(matrix, false).empty());
    for (const int features : {0, FADF_BSTR | FADF_HAVEVARTYPE, FADF_VARIANT | FADF_HAVEVARTYPE}) {
        const std::uint32_t size = 2, bytes = (features & FADF_VARIANT) != 0 ? sizeof(VARIANT) : sizeof(BSTR);
        TestArray typeless;
        ReDimVbArray(typeless.array, 1, &size, bytes, static_cast<std::uint16_t>(features), 0);
        if ((features & FADF_VARIANT) != 0) static_cast<VARIANT*>(typeless->pvData)[1].vt = VT_BSTR;
        EXPECT_EQ(CStringWFromBstrArray(typeless, false, 1), TEXT("")) << features;
    }
}

TEST(VbStrings, PairsAreRowsOfTwoThatOwnNothing) {
    TestArray array;
    VbArrayFromPairs(true, array.array, {{TEXT("k1"), TEXT("v1")}, {TEXT("k2"), TEXT("caf\xE9")}}, 1);
    EXPECT_EQ(VbArrayDimensions(array), (std::vector<std::uint32_t>{2, 2}));
    EXPECT_EQ(array->rgsabound[1].lLbound, 1);
    EXPECT_EQ(array->fFeatures, 0u);
    EXPECT_EQ(Contents(array), (std::vector<std::string>{"k1", "k2", "v1", "caf\xE9"}));
    for (const BSTR text : array.Data<BSTR>()) SysFreeString(text);

    TestArray owning(VT_BSTR, {1, 2}, 1, FADF_FIXEDSIZE);
    VbArrayFromPairs(false, owning.array, {{TEXT("old"), TEXT("pair")}}, 1);
    VbArrayFromPairs(false, owning.array, {{TEXT("new"), TEXT("")}}, 1);
    EXPECT_EQ(Contents(owning), (std::vector<std::string>{Wide(TEXT("new")), ""})) << "copies";
    const auto raised = [](SAFEARRAY*& slot, std::int32_t lowerBound) {
        return Raised([&] { VbArrayFromPairs(false, slot, {{TEXT("a"), TEXT("b")}}, lowerBound); });
    };
    for (const std::int32_t outside : {0, 2}) {
        EXPECT_EQ(raised(owning.array, outside), "VexArraySizeError ReDimVbArray 2632");
    }
    owning->rgsabound[0].lLbound = 0;  // has the first column, and not the second
    EXPECT_EQ(raised(owning.array, 1), "VexArraySizeError ReDimVbArray 2632");
    EXPECT_EQ(Contents(owning), (std::vector<std::string>{Wide(TEXT("new")), ""}));
    TestArray other(VT_BSTR, {1, 2}, 5);
    EXPECT_EQ(raised(other.array, INT32_MAX - 2), "") << "made to fit";
    for (const BSTR text : other.Data<BSTR>()) SysFreeString(text);
    EXPECT_EQ(raised(other.array, INT32_MAX - 1), "VexOutOfMemory ReDimVbArray 2634");
}

// What a reader makes of a VARIANT with the array, as texts in brackets, or what it raises.
std::string Read(Strings (*read)(const VARIANT*), int type, SAFEARRAY* array) {
    VARIANT variant;
    VariantInit(&variant);
    variant.vt = static_cast<VARTYPE>(type);
    variant.parray = array;
    std::string texts;
    const std::string raised = Raised([&] {
        for (const CStringW& text : read(&variant)) texts += "[" + std::string(CStringA(text)) + "]";
    });
    EXPECT_EQ(array == nullptr ? 0 : array->cLocks, 0u);
    return raised.empty() ? texts : raised.substr(0, raised.find(' '));
}

TEST(VariantStrings, OfBstrsTakeOneDimensionOfThatTypeOnly) {
    constexpr auto read = VectorCStringWFromVariantContainingArrayOfBSTR;
    EXPECT_TRUE(read(nullptr).empty());
    EXPECT_EQ(Read(read, VT_ARRAY | VT_BSTR, nullptr), "");
    const TestArray array(VT_BSTR, {2}, 5);
    EXPECT_EQ(Read(read, VT_ARRAY | VT_BSTR, array), "[][]");
    for (const int type :
         {int{VT_BSTR}, VT_ARRAY | VT_VARIANT, VT_ARRAY | VT_BSTR | VT_BYREF, int{VT_EMPTY}}) {
        EXPECT_EQ(Read(read, type, nullptr), "VexParameterError");
    }
    EXPECT_EQ(Read(read, VT_ARRAY | VT_BSTR, TestArray(VT_BSTR, {1, 2})), "VexParameterError");
}

TEST(VariantStrings, OfVariantsTakeASingleRowOrColumnToo) {
    constexpr auto read = VectorCStringWFromVariantContainingArrayOfVariantContainingBSTR;
    constexpr int type = VT_ARRAY | VT_VARIANT;
    EXPECT_TRUE(read(nullptr).empty());
    EXPECT_EQ(Read(read, type, nullptr), "");
    for (const auto& shape : {std::initializer_list<ULONG>{3}, {1, 3}, {3, 1}}) {
        const TestArray array(VT_VARIANT, shape, 1);
        auto* const elements = static_cast<VARIANT*>(array->pvData);
        elements[0] = VariantFromCStringW(TEXT("ab"));
        elements[2] = VariantFromCStringW(TEXT("c"));
        for (const VARTYPE empty : {VT_EMPTY, VT_BSTR}) {
            elements[1].vt = empty;
            EXPECT_EQ(Read(read, type, array), "[ab][][c]");
        }
        elements[1].vt = VT_R8;
        EXPECT_EQ(Read(read, type, array), "VexParameterError");
    }
    EXPECT_EQ(Read(read, type, TestArray(VT_VARIANT, {1, 0})), "");
    for (const auto& shape : {std::initializer_list<ULONG>{2, 3}, {0, 0}, {1, 1, 1}}) {
        EXPECT_EQ(Read(read, type, TestArray(VT_VARIANT, shape)), "VexParameterError");
    }
    EXPECT_EQ(Read(read, VT_ARRAY | VT_BSTR, nullptr), "VexParameterError");
    EXPECT_EQ(Read(read, type, TestArray(VT_BSTR, {2})), "VexParameterError");
}

}  // namespace
