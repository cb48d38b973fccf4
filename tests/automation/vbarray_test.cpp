// Shapes of Visual Basic arrays: what is made, kept, resized, refused and destroyed.
#include "automation/arraytest.h"

#include <numeric>
#include <random>

namespace {

using Sizes = std::vector<std::uint32_t>;

struct Bounds {
    std::uint32_t count;
    std::int32_t lower;
    bool operator==(const Bounds&) const = default;
};

std::vector<Bounds> BoundsOf(const SAFEARRAY* array) {
    std::vector<Bounds> bounds;
    for (const SAFEARRAYBOUND& bound : std::span(array->rgsabound, array->cDims)) {
        bounds.push_back({bound.cElements, bound.lLbound});
    }
    return bounds;
}

TEST(ReDim, MakesWhatIsWantedRightmostDimensionFirst) {
    TestArray array;
    ReDimVbArray(array.array, Sizes{4, 3, 2}, 8, FADF_HAVEVARTYPE, -5);
    EXPECT_EQ(BoundsOf(array), (std::vector<Bounds>{{4, -5}, {3, -5}, {2, -5}}));
    EXPECT_EQ(array->cbElements, 8u);
    EXPECT_EQ(array->fFeatures, FADF_HAVEVARTYPE);
    EXPECT_EQ(VbArrayDimensions(array), (Sizes{2, 3, 4}));
    EXPECT_EQ(array.Data<double>(), std::vector<double>(24));

    LONG bound = 0;
    EXPECT_EQ(SafeArrayGetUBound(array, 1, &bound), S_OK);
    EXPECT_EQ(bound, -4);
    EXPECT_EQ(SafeArrayGetUBound(array, 3, &bound), S_OK);
    EXPECT_EQ(bound, -2);
}

TEST(ReDim, BothFormsAreOne) {
    TestArray first;
    TestArray second;
    const std::uint32_t sizes[] = {4, 3};
    ReDimVbArray(first.array, 2, sizes, 2, 0, 1);
    ReDimVbArray(second.array, Sizes{4, 3}, 2, 0, 1);
    EXPECT_EQ(BoundsOf(first), BoundsOf(second));
    ReDimVbArray(first.array, 0, nullptr, 2, 0, 1);
    EXPECT_EQ(first.array, nullptr);
}

TEST(ReDim, ToNoDimensionsClearsAllButAFixedArray) {
    TestArray array;
    ReDimVbArray(array.array, Sizes{}, 8, 0, 0);
    EXPECT_EQ(array.array, nullptr);
    array.array = MakeArray(VT_R8, {3, 4});
    ReDimVbArray(array.array, Sizes{}, 8, 0, 0);
    EXPECT_EQ(array.array, nullptr);

    TestArray fixed(MakeFixedArray(VT_R8, {3, 4}));
    SAFEARRAY* const before = fixed.array;
    ReDimVbArray(fixed.array, Sizes{}, 4, 0, 0);
    EXPECT_EQ(fixed.array, before);
    EXPECT_EQ(VbArrayElementCount(fixed), 12u);
}

TEST(ReDim, ResizesTheRightmostDimensionInPlace) {
    struct Case {
        const char* what;
        Sizes sizes;
        std::uint32_t elementSize;
        bool kept;
    };
    const Case cases[] = {
        {"more columns", {5, 2}, 4, true},       {"fewer columns", {1, 2}, 4, true},
        {"the same", {3, 2}, 4, true},           {"no columns", {0, 2}, 4, true},
        {"another row count", {3, 4}, 4, false}, {"another element size", {3, 2}, 8, false},
        {"one dimension", {3}, 4, false},        {"three dimensions", {3, 2, 1}, 4, false},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.what);
        TestArray array;
        ReDimVbArray(array.array, Sizes{3, 2}, 4, 0, 1);
        auto* const data = static_cast<std::int32_t*>(array->pvData);
        std::iota(data, data + 6, 1);
        ReDimVbArray(array.array, one.sizes, one.elementSize, 0, 7);

        std::vector<Bounds> bounds;
        for (const std::uint32_t size : one.sizes) bounds.push_back({size, 7});
        if (one.kept) bounds[1].lower = 1;
        EXPECT_EQ(BoundsOf(array), bounds);
        EXPECT_EQ(array->cbElements, one.elementSize);
        if (one.elementSize != 4) continue;
        std::vector<std::int32_t> expected(VbArrayElementCount(array));
        for (std::size_t i = 0; one.kept && i < expected.size() && i < 6; ++i) {
            expected[i] = static_cast<std::int32_t>(i + 1);
        }
        EXPECT_EQ(array.Data<std::int32_t>(), expected);
    }
}

TEST(ReDim, TakesAFixedArrayThatHasRoomAndNamesWhyAnotherHasNot) {
    struct Case {
        const char* what;
        std::initializer_list<ULONG> counts;  // of the array of doubles, leftmost first
        Sizes sizes;
        std::uint32_t elementSize;
        std::int32_t code;
    };
    const Case cases[] = {
        {"the same", {10}, {10}, 8, 0},
        {"room to spare", {10}, {7}, 8, 0},
        {"none wanted", {10}, {0}, 8, 0},
        {"one too many", {10}, {11}, 8, VexCode::FixedArraySize},
        {"another element size", {10}, {7}, 4, VexCode::FixedArrayElementSize},
        {"too many of another element size", {10}, {11}, 4, VexCode::FixedArraySize},
        {"two dimensions of one", {10}, {7, 1}, 8, VexCode::FixedArrayDimensions},
        {"one dimension of two", {3, 4}, {4}, 8, VexCode::FixedArrayDimensions},
        {"dimensions before all else", {3, 4}, {99}, 4, VexCode::FixedArrayDimensions},
        {"a matrix", {3, 4}, {4, 3}, 8, 0},
        {"fewer columns", {3, 4}, {2, 3}, 8, 0},
        {"more columns", {3, 4}, {5, 3}, 8, VexCode::FixedArraySize},
        {"fewer rows", {3, 4}, {4, 2}, 8, VexCode::FixedArraySize},
        {"more rows", {3, 4}, {4, 5}, 8, VexCode::FixedArraySize},
        {"rows after element size", {3, 4}, {4, 2}, 4, VexCode::FixedArrayElementSize},
    };
    for (const int feature : {FADF_FIXEDSIZE, FADF_STATIC}) {
        for (const Case& one : cases) {
            SCOPED_TRACE(one.what);
            TestArray array(MakeArray(VT_R8, one.counts, 5));
            array->fFeatures |= static_cast<USHORT>(feature);
            SAFEARRAY* const before = array.array;
            const std::vector<Bounds> bounds = BoundsOf(array);
            const auto redim = [&] { ReDimVbArray(array.array, one.sizes, one.elementSize, 0, 1); };
            if (one.code == 0) {
                EXPECT_NO_THROW(redim());
            } else {
                ExpectRaised("VexArraySizeError", "ReDimVbArray", one.code, {}, redim);
            }
            EXPECT_EQ(array.array, before);
            EXPECT_EQ(BoundsOf(array), bounds);
            array->fFeatures &= static_cast<USHORT>(~feature);
        }
    }
}

TEST(ReDim, OfALockedArrayIsRefusedWhereItWouldBeResized) {
    TestArray array(MakeArray(VT_R8, {5}));
    SAFEARRAY* const before = array.array;
    const VbArrayLock lock(array);
    ExpectRaised("VexOutOfMemory", "ReDimVbArray", VexCode::ArrayAllocation, {},
                 [&] { ReDimVbArray(array.array, Sizes{8}, 8, 0, 0); });
    EXPECT_EQ(array.array, before);
    EXPECT_EQ(VbArrayLength(array), 5u);
}

TEST(ReDim, LetsGoOfALockedArrayThatItReplaces) {
    const TestArray locked(MakeArray(VT_R8, {5}));
    TestArray slot(locked.array);
    {
        const VbArrayLock lock(locked);
        ReDimVbArray(slot.array, Sizes{2}, 4, 0, 0);
        EXPECT_NE(slot.array, locked.array);
        EXPECT_EQ(lock.data, locked->pvData);
        EXPECT_EQ(VbArrayLength(locked), 5u);
    }
    EXPECT_EQ(locked->cLocks, 0u);
}

TEST(ReDim, RefusesWhatNoArrayCanHave) {
    const struct {
        Sizes sizes;
        std::uint32_t elementSize;
    } cases[] = {
        {{0x10000, 0x10000}, 1},
        {{0x20000000}, 8},
        {{0x10000, 0x10000, 0x10000, 0x10000, 0x10000}, 8},
        {Sizes(0x10000, 1), 8},
    };
    for (const auto& one : cases) {
        TestArray array;
        const auto redim = [&] { ReDimVbArray(array.array, one.sizes, one.elementSize, 0, 0); };
        ExpectRaised("VexOutOfMemory", "ReDimVbArray", VexCode::ArrayAllocation, {}, redim);
        EXPECT_EQ(array.array, nullptr);
    }
    TestArray array(MakeArray(VT_R8, {5}));
    ExpectRaised("VexOutOfMemory", "ReDimVbArray", VexCode::ArrayAllocation, {},
                 [&] { ReDimVbArray(array.array, Sizes{0x20000000}, 8, 0, 0); });
    EXPECT_EQ(VbArrayLength(array), 5u);
}

TEST(VbArray, QueriesAnswerInVisualBasicsOrder) {
    struct Case {
        std::vector<SAFEARRAYBOUND> bounds;  // leftmost first; none for a null array
        Sizes counts;
        std::size_t elements;
        std::uint32_t length;
        bool square;
        std::uint32_t size;
    };
    constexpr std::uint32_t untouched = 77;
    const Case cases[] = {
        {{}, {}, 0, 0, false, untouched},
        {{{5, 1}}, {5}, 5, 5, false, untouched},
        {{{0, 1}}, {0}, 0, 0, false, untouched},
        {{{3, 0}, {4, -2}}, {3, 4}, 12, 0, false, 3},
        {{{4, 9}, {4, 0}}, {4, 4}, 16, 0, true, 4},
        {{{1, 0}, {1, 0}}, {1, 1}, 1, 0, true, 1},
        {{{0, 0}, {0, 0}}, {0, 0}, 0, 0, false, 0},
        {{{0, 0}, {3, 0}}, {0, 3}, 0, 0, false, 0},
        {{{2, 0}, {2, 0}, {2, 0}}, {2, 2, 2}, 8, 0, false, untouched},
    };
    for (const Case& one : cases) {
        std::vector<SAFEARRAYBOUND> bounds = one.bounds;
        const TestArray array(bounds.empty()
                                  ? nullptr
                                  : SafeArrayCreate(VT_I2, static_cast<UINT>(bounds.size()), bounds.data()));
        EXPECT_EQ(VbArrayDimensions(array), one.counts);
        EXPECT_EQ(VbArrayElementCount(array), one.elements);
        EXPECT_EQ(VbArrayLength(array), one.length);
        std::uint32_t size = untouched;
        EXPECT_EQ(IsSquareVbArray(array, size), one.square);
        EXPECT_EQ(size, one.size);
        EXPECT_EQ(IsNullVbArray(array), one.bounds.empty());
    }
}

TEST(VbArray, DestructionLeavesFixedArraysAndNullSlots) {
    DestroyVbArray(nullptr);
    SAFEARRAY* array = nullptr;
    DestroyVbArray(&array);
    EXPECT_EQ(array, nullptr);
    array = MakeArray(VT_BSTR, {2});
    static_cast<BSTR*>(array->pvData)[0] = SysAllocString(TEXT("goes with its array"));
    DestroyVbArray(&array);
    EXPECT_EQ(array, nullptr);

    TestArray fixed(MakeFixedArray(VT_R8, {2}));
    SAFEARRAY* const before = fixed.array;
    DestroyVbArray(&fixed.array);
    EXPECT_EQ(fixed.array, before);
}

TEST(VbArray, ALockHoldsTheDataForItsScope) {
    const TestArray array(MakeArray(VT_R8, {2}));
    {
        const VbArrayLock lock(array);
        const VbArrayLock inner(array);
        EXPECT_EQ(lock.data, array->pvData);
        EXPECT_EQ(array->cLocks, 2u);
    }
    EXPECT_EQ(array->cLocks, 0u);
    const VbArrayLock none(nullptr);
    EXPECT_EQ(none.data, nullptr);
}

// --- vectors
// -------------------------------------------------------------------------------------------------

template <typename Value, typename Write, typename Read>
void ExpectRoundTrips(Write write, Read read) {
    std::mt19937_64 random(7);
    for (const std::size_t size : {0U, 1U, 2U, 7U, 1000U}) {
        std::vector<Value> values(size);
        for (Value& value : values) value = static_cast<Value>(random());
        for (const std::int32_t lowerBound : {0, 1, -3}) {
            const TestArray array(write(values, lowerBound));
            ASSERT_NE(array.array, nullptr) << "no values make an array too";
            EXPECT_EQ(array->cbElements, sizeof(Value));
            EXPECT_EQ(array->fFeatures, 0u);
            EXPECT_EQ(BoundsOf(array), (std::vector<Bounds>{{static_cast<std::uint32_t>(size), lowerBound}}));
            EXPECT_EQ(array.Data<Value>(), values);
            EXPECT_EQ(read(array.array), values);
        }
    }
    const TestArray matrix(MakeArray(VT_R8, {2, 2}));
    EXPECT_TRUE(read(matrix.array).empty());
    EXPECT_TRUE(read(nullptr).empty());
    const TestArray otherSize(MakeArray(sizeof(Value) == 1 ? VT_R8 : VT_UI1, {2}));
    EXPECT_TRUE(read(otherSize.array).empty());
}

TEST(VbVectors, ComeBackAsTheyWentIn) {
    ExpectRoundTrips<double>(VbArrayFromVectorDouble, VectorDoubleFromVbArray);
    ExpectRoundTrips<std::int16_t>(VbArrayFromVectorInt16, VectorInt16FromVbArray);
    ExpectRoundTrips<std::int32_t>(VbArrayFromVectorInt32<std::int32_t>, VectorInt32FromVbArray);
    ExpectRoundTrips<std::uint32_t>(VbArrayFromVectorInt32<std::uint32_t>, VectorUInt32FromVbArray);
    ExpectRoundTrips<LONG>(VbArrayFromVectorInt32<LONG>, [](SAFEARRAY* array) {
        const auto values = VectorInt32FromVbArray(array);
        return std::vector<LONG>(values.begin(), values.end());
    });
    const TestArray floats(VbArrayFromVectorInt32(std::vector<float>{1.5F, -2}, 0));
    EXPECT_EQ(floats.Data<float>(), (std::vector<float>{1.5F, -2}));
    const TestArray wide(MakeArray(VT_I8, {2}));
    static_cast<std::int64_t*>(wide->pvData)[1] = -5;
    EXPECT_EQ(VectorInt64FromVbArray(wide), (std::vector<std::int64_t>{0, -5}));
}

TEST(VbVectors, BytesGoIntoASlot) {
    VbArrayFromVectorByte(nullptr, {1, 2}, 0);

    TestArray array(MakeArray(VT_R8, {3}));
    VbArrayFromVectorByte(&array.array, {1, 2, 3}, 5);
    EXPECT_EQ(BoundsOf(array), (std::vector<Bounds>{{3, 5}}));
    EXPECT_EQ(array.Data<std::uint8_t>(), (std::vector<std::uint8_t>{1, 2, 3}));
    VbArrayFromVectorByte(&array.array, {}, 5);
    EXPECT_EQ(array.array, nullptr);

    TestArray fixed(MakeFixedArray(VT_UI1, {4}));
    VbArrayFromVectorByte(&fixed.array, {9, 8, 7, 6}, 1);
    VbArrayFromVectorByte(&fixed.array, {1, 2}, 1);
    VbArrayFromVectorByte(&fixed.array, {}, 1);
    EXPECT_EQ(fixed.Data<std::uint8_t>(), (std::vector<std::uint8_t>{1, 2, 7, 6}));
    EXPECT_EQ(BoundsOf(fixed), (std::vector<Bounds>{{4, 0}}));
    ExpectRaised("VexArraySizeError", "ReDimVbArray", VexCode::FixedArraySize, {}, [&] {
        VbArrayFromVectorByte(&fixed.array, {1, 2, 3, 4, 5}, 1);
    });
    EXPECT_EQ(fixed.Data<std::uint8_t>(), (std::vector<std::uint8_t>{1, 2, 7, 6}));
}

TEST(VbVectors, VariantsAreBorrowed) {
    const TestArray array(MakeArray(VT_VARIANT, {2}));
    VARIANT* const elements = static_cast<VARIANT*>(array->pvData);
    elements[1] = VariantFromCStringW(TEXT("borrowed"));
    const std::vector<VARIANT> variants = VectorVariantFromVbArray(array);
    ASSERT_EQ(variants.size(), 2u);
    EXPECT_EQ(variants[0].vt, VT_EMPTY);
    EXPECT_EQ(variants[1].bstrVal, elements[1].bstrVal);
    const TestArray matrix(MakeArray(VT_VARIANT, {2, 2}));
    EXPECT_TRUE(VectorVariantFromVbArray(matrix).empty());
    EXPECT_TRUE(VectorVariantFromVbArray(nullptr).empty());
}

TEST(VbVectors, AnArrayWithoutItsDataReadsAsZeros) {
    const TestArray array(MakeArray(VT_I4, {3}));
    SafeArrayDestroyData(array);
    EXPECT_EQ(VectorInt32FromVbArray(array), std::vector<std::int32_t>(3));
}

// --- matrices
// ------------------------------------------------------------------------------------------------

double ElementAt(SAFEARRAY* array, LONG r, LONG c) {
    LONG indices[] = {r, c};
    double value = -1;
    EXPECT_EQ(SafeArrayGetElement(array, indices, &value), S_OK);
    return value;
}

TEST(VbMatrix, HasItsRowsAsTheFirstIndex) {
    const Matrix matrix = {{1, 2, 3}, {4, 5, 6}};
    const TestArray array(VbArrayFromMatrix(matrix, 1));
    EXPECT_EQ(VbArrayDimensions(array), (Sizes{2, 3}));
    EXPECT_EQ(array.Data<double>(), (std::vector<double>{1, 4, 2, 5, 3, 6}));
    for (LONG r = 0; r < 2; ++r) {
        for (LONG c = 0; c < 3; ++c) {
            EXPECT_EQ(ElementAt(array, r + 1, c + 1),
                      matrix[static_cast<std::size_t>(r)][static_cast<std::size_t>(c)]);
        }
    }
    EXPECT_EQ(MatrixFromVbArray(array), matrix);
}

TEST(VbMatrix, OfEveryShapeComesBackAsItWentIn) {
    std::mt19937 random(11);
    const std::size_t counts[] = {1, 2, 3, 7, 8, 9, 15, 16, 17, 63, 64, 65, 130};
    for (const std::size_t rows : counts) {
        for (const std::size_t columns : counts) {
            Matrix matrix(rows, std::vector<double>(columns));
            for (auto& row : matrix) {
                for (double& value : row) value = static_cast<double>(random());
            }
            const TestArray array(VbArrayFromMatrix(matrix, static_cast<std::int32_t>(random() % 5) - 2));
            const auto* const data = static_cast<const double*>(array->pvData);
            for (std::size_t c = 0; c < columns; ++c) {
                for (std::size_t r = 0; r < rows; ++r) ASSERT_EQ(data[c * rows + r], matrix[r][c]);
            }
            ASSERT_EQ(MatrixFromVbArray(array), matrix);
        }
    }
}

TEST(VbMatrix, WithoutElementsIsNull) {
    EXPECT_EQ(VbArrayFromMatrix({}, 0), nullptr);
    EXPECT_EQ(VbArrayFromMatrix({{}, {1}}, 0), nullptr);
    const TestArray noColumns(MakeArray(VT_R8, {2, 0}));
    EXPECT_EQ(MatrixFromVbArray(noColumns), Matrix(2));
    const TestArray noRows(MakeArray(VT_R8, {0, 2}));
    EXPECT_EQ(MatrixFromVbArray(noRows), Matrix());
}

TEST(VbMatrix, TakesItsWidthFromTheFirstRow) {
    const TestArray array(VbArrayFromMatrix({{1, 2}, {3, 4, 99}}, 0));
    EXPECT_EQ(MatrixFromVbArray(array), (Matrix{{1, 2}, {3, 4}}));
    ExpectRaised("VexArraySizeError", "VbArrayFromMatrix", VexCode::Sentence,
                 {TEXT("Row 2 of the matrix is shorter than its first row")}, [] {
                     TestArray(VbArrayFromMatrix({{1, 2}, {3, 4}, {5}}, 0));
                 });
}

TEST(VbMatrix, OfAnotherRankIsRefused) {
    const TestArray vector(MakeArray(VT_R8, {4}));
    const TestArray cube(MakeArray(VT_R8, {2, 2, 2}));
    for (SAFEARRAY* const array : {static_cast<SAFEARRAY*>(nullptr), vector.array, cube.array}) {
        ExpectRaised("VexArraySizeError", "MatrixFromVbArray", VexCode::Sentence,
                     {TEXT("VB array is not 2-dimensional")}, [&] { (void)MatrixFromVbArray(array); });
    }
    const TestArray integers(MakeArray(VT_I4, {2, 2}));
    ExpectRaised("VexArraySizeError", "MatrixFromVbArray", VexCode::Sentence,
                 {TEXT("VB array does not hold doubles")}, [&] { (void)MatrixFromVbArray(integers); });
    EXPECT_EQ(integers->cLocks, 0u);
}

SAFEARRAY* ArrayOfRows(const Matrix& rows) {
    SAFEARRAY* const array = MakeArray(VT_VARIANT, {static_cast<ULONG>(rows.size())}, 3);
    auto* next = static_cast<VARIANT*>(array->pvData);
    for (const auto& row : rows) {
        next->vt = VT_ARRAY | VT_R8;
        (next++)->parray = VbArrayFromVectorDouble(row, 1);
    }
    return array;
}

TEST(VbMatrix, OfRowArraysMayBeRagged) {
    const Matrix ragged = {{1, 2, 3}, {}, {4}};
    const TestArray array(ArrayOfRows(ragged));
    EXPECT_EQ(MatrixFromVbArrayOfVariants(array), ragged);

    VARIANT* const elements = static_cast<VARIANT*>(array->pvData);
    DestroyVbArray(&elements[0].parray);
    SafeArrayDestroy(elements[2].parray);
    elements[2].parray = MakeArray(VT_R8, {2, 2});
    EXPECT_EQ(MatrixFromVbArrayOfVariants(array), Matrix(3));

    VariantClear(&elements[1]);
    elements[1].vt = VT_R8;
    EXPECT_EQ(MatrixFromVbArrayOfVariants(array), Matrix());
}

TEST(VbMatrix, OfRowArraysIsEmptyForAnyOtherArray) {
    EXPECT_TRUE(MatrixFromVbArrayOfVariants(nullptr).empty());
    const TestArray doubles(MakeArray(VT_R8, {2}));
    EXPECT_TRUE(MatrixFromVbArrayOfVariants(doubles).empty());
    const TestArray matrix(MakeArray(VT_VARIANT, {1, 1}));
    EXPECT_TRUE(MatrixFromVbArrayOfVariants(matrix).empty());
    const TestArray fixed(ArrayOfRows({{1}}));
    fixed->fFeatures |= FADF_FIXEDSIZE;
    EXPECT_TRUE(MatrixFromVbArrayOfVariants(fixed).empty()) << "its features are other ones";
}

}  // namespace
