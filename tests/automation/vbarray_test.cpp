// Visual Basic arrays: their shapes, and the vectors and matrices in them.
#include "automation/arraytest.h"

#include <numeric>
#include <random>

namespace {

using Sizes = std::vector<std::uint32_t>;

// "count from lower bound", in the descriptor's order.
std::string BoundsOf(const SAFEARRAY* array) {
    std::string bounds;
    for (const SAFEARRAYBOUND& bound : std::span(array->rgsabound, array->cDims)) {
        bounds += std::to_string(bound.cElements) + " from " + std::to_string(bound.lLbound) + ", ";
    }
    return bounds;
}

TEST(ReDim, MakesWhatIsWantedRightmostDimensionFirst) {
    TestArray array;
    const std::uint32_t sizes[] = {4, 3, 2};
    ReDimVbArray(array.array, 3, sizes, 8, FADF_HAVEVARTYPE, -5);
    EXPECT_EQ(BoundsOf(array), "4 from -5, 3 from -5, 2 from -5, ");
    EXPECT_EQ(array->cbElements, 8u);
    EXPECT_EQ(array->fFeatures, FADF_HAVEVARTYPE);
    EXPECT_EQ(array.Data<double>(), std::vector<double>(24));
    ReDimVbArray(array.array, 0, nullptr, 2, 0, 1);
    EXPECT_EQ(array.array, nullptr);
}

TEST(ReDim, ResizesTheRightmostDimensionInPlace) {
    const struct {
        Sizes sizes;
        std::uint32_t elementSize;
        const char* bounds;
        std::vector<std::int16_t> data;
    } cases[] = {
        {{3, 2}, 2, "3 from 7, 2 from 1, ", {1, 2, 3, 4, 0, 0}},
        {{1, 2}, 2, "1 from 7, 2 from 1, ", {1, 2}},
        {{0, 2}, 2, "0 from 7, 2 from 1, ", {}},
        {{2, 3}, 2, "2 from 7, 3 from 7, ", std::vector<std::int16_t>(6)},
        {{2, 1}, 4, "2 from 7, 1 from 7, ", std::vector<std::int16_t>(2)},
        {{2, 2, 1}, 2, "2 from 7, 2 from 7, 1 from 7, ", std::vector<std::int16_t>(4)},
    };
    for (const auto& each : cases) {
        TestArray array(VT_I2, {2, 2}, 1);
        auto* const data = static_cast<std::int16_t*>(array->pvData);
        std::iota(data, data + 4, std::int16_t{1});
        ReDimVbArray(array.array, each.sizes, each.elementSize, 0, 7);
        EXPECT_EQ(BoundsOf(array), each.bounds);
        EXPECT_EQ(array->cbElements, each.elementSize);
        EXPECT_EQ(array.Data<std::int16_t>(), each.data);
    }
}

TEST(ReDim, TakesAFixedArrayThatHasRoomAndNamesWhyAnotherHasNot) {
    const struct {
        std::initializer_list<ULONG> counts;  // of the array of doubles, leftmost first
        Sizes sizes;
        std::uint32_t elementSize;
        int code;
    } cases[] = {
        {{10}, {10}, 8, 0},        {{10}, {7}, 8, 0},         {{10}, {0}, 8, 0},
        {{10}, {11}, 8, 2632},     {{10}, {7}, 4, 2633},      {{10}, {11}, 4, 2632},
        {{10}, {7, 1}, 8, 2631},   {{3, 4}, {4}, 8, 2631},    {{3, 4}, {99}, 4, 2631},
        {{3, 4}, {4, 3}, 8, 0},    {{3, 4}, {2, 3}, 8, 0},    {{3, 4}, {5, 3}, 8, 2632},
        {{3, 4}, {4, 2}, 8, 2632}, {{3, 4}, {4, 5}, 8, 2632}, {{3, 4}, {4, 2}, 4, 2633},
        {{3, 4}, {}, 4, 0},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(&each - cases);
        const int feature = (&each - cases) % 2 == 0 ? FADF_FIXEDSIZE : FADF_STATIC;
        TestArray array(VT_R8, each.counts, 5, feature);
        SAFEARRAY* const before = array.array;
        const std::string bounds = BoundsOf(array);
        EXPECT_EQ(Raised([&] { ReDimVbArray(array.array, each.sizes, each.elementSize, 0, 1); }),
                  each.code == 0 ? "" : "VexArraySizeError ReDimVbArray " + std::to_string(each.code));
        EXPECT_EQ(array.array, before);
        EXPECT_EQ(BoundsOf(array), bounds);
    }
}

TEST(ReDim, OfALockedArrayIsRefusedOrLetsGoOfIt) {
    TestArray locked(VT_R8, {5});
    TestArray slot(locked.array);
    {
        const VbArrayLock lock(locked);
        const VbArrayLock inner(locked);
        EXPECT_EQ(Raised([&] { ReDimVbArray(slot.array, Sizes{8}, 8, 0, 0); }),
                  "VexOutOfMemory ReDimVbArray 2634");
        EXPECT_EQ(slot.array, locked.array);
        ReDimVbArray(slot.array, Sizes{2}, 4, 0, 0);
        EXPECT_NE(slot.array, locked.array);
        EXPECT_EQ(lock.data, locked->pvData);
        EXPECT_EQ(VbArrayLength(locked), 5u);
        EXPECT_EQ(locked->cLocks, 2u);
    }
    EXPECT_EQ(locked->cLocks, 0u);
    EXPECT_EQ(VbArrayLock(nullptr).data, nullptr);
}

TEST(ReDim, RefusesWhatNoArrayCanHave) {
    for (const Sizes& sizes :
         {Sizes{0x8000, 0x10000}, Sizes{0x20000000}, Sizes(5, 0x10000), Sizes(0x10000, 1)}) {
        TestArray array;
        EXPECT_EQ(Raised([&] { ReDimVbArray(array.array, sizes, 8, 0, 0); }),
                  "VexOutOfMemory ReDimVbArray 2634");
        EXPECT_EQ(array.array, nullptr);
    }
}

TEST(VbArray, AnswersForNullAndEmptyShapes) {
    SAFEARRAY* none = nullptr;
    ReDimVbArray(none, Sizes{}, 8, 0, 0);
    DestroyVbArray(nullptr);
    DestroyVbArray(&none);
    VbArrayFromVectorByte(nullptr, {1}, 0);
    EXPECT_TRUE(IsNullVbArray(none) && VbArrayDimensions(none).empty());
    EXPECT_EQ(VbArrayElementCount(none) + VbArrayLength(none), 0u);
    std::uint32_t size = 99;
    EXPECT_FALSE(IsSquareVbArray(none, size) || IsSquareVbArray(TestArray(VT_R8, {3}), size));
    EXPECT_EQ(size, 99u);
    for (const ULONG rows : {0u, 2u, 3u}) {
        for (const ULONG columns : {0u, 3u}) {
            const TestArray array(VT_R8, {rows, columns});
            EXPECT_EQ(IsSquareVbArray(array, size), rows == 3 && columns == 3);
            EXPECT_EQ(size, rows);
            EXPECT_EQ(VbArrayElementCount(array), std::size_t{rows} * columns);
        }
    }
}

template <typename Value, typename Write, typename Read>
void ExpectRoundTrips(Write write, Read read) {
    for (const std::uint32_t size : {0U, 1U, 2U, 1000U}) {
        std::vector<Value> values(size);
        std::iota(values.begin(), values.end(), static_cast<Value>(-2));
        const TestArray array(write(values, -3));
        ASSERT_NE(array.array, nullptr) << "no values make an array too";
        EXPECT_EQ(array->cbElements, sizeof(Value));
        EXPECT_EQ(array->fFeatures, 0u);
        EXPECT_EQ(BoundsOf(array), std::to_string(size) + " from -3, ");
        EXPECT_EQ(array.Data<Value>(), values);
        EXPECT_EQ(read(array), values);
    }
    EXPECT_TRUE(read(nullptr).empty());
    EXPECT_TRUE(read(TestArray(VT_R8, {2, 2})).empty());
    EXPECT_TRUE(read(TestArray(VT_UI1, {2})).empty());
}

TEST(VbVectors, ComeBackAsTheyWentIn) {
    ExpectRoundTrips<double>(VbArrayFromVectorDouble, VectorDoubleFromVbArray);
    ExpectRoundTrips<std::int16_t>(VbArrayFromVectorInt16, VectorInt16FromVbArray);
    ExpectRoundTrips<std::int32_t>(VbArrayFromVectorInt32<std::int32_t>, VectorInt32FromVbArray);
    ExpectRoundTrips<std::uint32_t>(VbArrayFromVectorInt32<std::uint32_t>, VectorUInt32FromVbArray);
    const TestArray wide(VT_I8, {2});
    static_cast<std::int64_t*>(wide->pvData)[1] = -5;
    EXPECT_EQ(VectorInt64FromVbArray(wide), (std::vector<std::int64_t>{0, -5}));
    const TestArray variants(VT_VARIANT, {2});
    static_cast<VARIANT*>(variants->pvData)[1] = VariantFromCStringW(TEXT("borrowed"));
    EXPECT_EQ(VectorVariantFromVbArray(variants).at(1).bstrVal,
              static_cast<VARIANT*>(variants->pvData)[1].bstrVal);
    const TestArray withoutData(VT_I4, {3});
    SafeArrayDestroyData(withoutData);
    EXPECT_EQ(VectorInt32FromVbArray(withoutData), std::vector<std::int32_t>(3));
}

TEST(VbVectors, BytesGoIntoASlot) {
    using Bytes = std::vector<std::uint8_t>;
    TestArray array(VT_R8, {3});
    VbArrayFromVectorByte(&array.array, {1, 2, 3}, 5);
    EXPECT_EQ(BoundsOf(array), "3 from 5, ");
    EXPECT_EQ(array.Data<std::uint8_t>(), (Bytes{1, 2, 3}));
    VbArrayFromVectorByte(&array.array, {}, 5);
    EXPECT_EQ(array.array, nullptr);
    TestArray fixed(VT_UI1, {4}, 0, FADF_FIXEDSIZE);
    VbArrayFromVectorByte(&fixed.array, {9, 8, 7, 6}, 1);
    VbArrayFromVectorByte(&fixed.array, {1, 2}, 1);
    VbArrayFromVectorByte(&fixed.array, {}, 1);
    EXPECT_EQ(Raised([&] { VbArrayFromVectorByte(&fixed.array, Bytes(5), 1); }),
              "VexArraySizeError ReDimVbArray 2632");
    EXPECT_EQ(fixed.Data<std::uint8_t>(), (Bytes{1, 2, 7, 6}));
}

TEST(VbMatrix, OfEveryShapeHasItsRowsAsTheFirstIndexAndComesBack) {
    std::mt19937 random(11);
    const std::size_t counts[] = {1, 2, 3, 7, 8, 9, 15, 16, 17, 63, 64, 65, 130};
    for (const std::size_t rows : counts) {
        for (const std::size_t columns : counts) {
            Matrix matrix(rows, std::vector<double>(columns));
            for (auto& row : matrix) {
                for (double& value : row) value = static_cast<double>(random());
            }
            const std::int32_t lowerBound = static_cast<std::int32_t>(random() % 5) - 2;
            const TestArray array(VbArrayFromMatrix(matrix, lowerBound));
            ASSERT_EQ(array->rgsabound[0].lLbound, lowerBound);
            ASSERT_EQ(array->rgsabound[1].lLbound, lowerBound);
            const auto* const data = static_cast<const double*>(array->pvData);
            for (std::size_t c = 0; c < columns; ++c) {
                for (std::size_t r = 0; r < rows; ++r) ASSERT_EQ(data[c * rows + r], matrix[r][c]);
            }
            ASSERT_EQ(MatrixFromVbArray(array), matrix);
        }
    }
}

TEST(VbMatrix, TakesItsWidthFromTheFirstRow) {
    EXPECT_EQ(VbArrayFromMatrix({{}, {1}}, 0), nullptr);
    const TestArray array(VbArrayFromMatrix({{1, 2}, {3, 4, 99}}, 0));
    EXPECT_EQ(MatrixFromVbArray(array), (Matrix{{1, 2}, {3, 4}}));
    EXPECT_EQ(Raised([] {
                  TestArray(VbArrayFromMatrix({{1, 2}, {3, 4}, {5}}, 0));
              }),
              "VexArraySizeError VbArrayFromMatrix 2845 <Row 2 of the matrix is shorter than its first row>");
    EXPECT_EQ(MatrixFromVbArray(TestArray(VT_R8, {2, 0})), Matrix(2));
    const TestArray vector(VT_R8, {4});
    for (SAFEARRAY* const other : {static_cast<SAFEARRAY*>(nullptr), vector.array}) {
        EXPECT_EQ(Raised([&] { (void)MatrixFromVbArray(other); }),
                  "VexArraySizeError MatrixFromVbArray 2845 <VB array is not 2-dimensional>");
    }
    EXPECT_EQ(Raised([] {
                  (void)MatrixFromVbArray(TestArray(VT_I4, {2, 2}));
              }),
              "VexArraySizeError MatrixFromVbArray 2845 <VB array does not hold doubles>");
}

TEST(VbMatrix, OfRowArraysMayBeRaggedAndIsEmptyForAnyOtherArray) {
    const Matrix ragged = {{1, 2, 3}, {}, {4}};
    const TestArray array(VT_VARIANT, {3}, 3);
    VARIANT* const elements = static_cast<VARIANT*>(array->pvData);
    for (std::size_t row = 0; row < 3; ++row) {
        elements[row].vt = VT_ARRAY | VT_R8;
        elements[row].parray = VbArrayFromVectorDouble(ragged[row], 1);
    }
    EXPECT_EQ(MatrixFromVbArrayOfVariants(array), ragged);
    array->fFeatures |= FADF_FIXEDSIZE;
    EXPECT_TRUE(MatrixFromVbArrayOfVariants(array).empty()) << "its features are other ones";
    array->fFeatures &= static_cast<USHORT>(~FADF_FIXEDSIZE);
    DestroyVbArray(&elements[0].parray);
    EXPECT_EQ(MatrixFromVbArrayOfVariants(array), (Matrix{{}, {}, {4}}));
    VariantClear(&elements[1]);
    elements[1].vt = VT_R8;
    EXPECT_TRUE(MatrixFromVbArrayOfVariants(array).empty());
    EXPECT_TRUE(MatrixFromVbArrayOfVariants(nullptr).empty());
    EXPECT_TRUE(MatrixFromVbArrayOfVariants(TestArray(VT_VARIANT, {1, 1})).empty());
}

}  // namespace
