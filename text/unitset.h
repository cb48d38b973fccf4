// Sets of single units, such as the delimiters of tokens.
#pragma once

#include <emmintrin.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <string_view>

namespace detail {

// A set of units, which is small as a rule. It reads the units of the view that it was made of.
template <typename Unit>
class UnitSet {
  public:
    explicit UnitSet(std::basic_string_view<Unit> units) noexcept : units_(units) {
        if (units.empty() || !IsSoughtInBlocks()) return;
        first_ = InAllPlaces(units.front());
        second_ = InAllPlaces(units[units.size() / 2]);
        third_ = InAllPlaces(units.back());
    }
    [[nodiscard]] bool Holds(Unit unit) const noexcept { return units_.find(unit) != units_.npos; }

    // The first place of a unit of the set, or `end`. A set of up to three is sought in whole blocks.
    [[nodiscard]] const Unit* FindIn(const Unit* begin, const Unit* end) const noexcept {
        if (units_.empty()) return end;
        if (IsSoughtInBlocks()) {
            for (; end - begin >= blockSize; begin += blockSize) {
                if (const unsigned places = PlacesInBlock(begin); places != 0)
                    return begin + std::countr_zero(places);
            }
        }
        return std::find_if(begin, end, [this](Unit unit) { return Holds(unit); });
    }

  private:
    static constexpr std::ptrdiff_t blockSize = 16;

    [[nodiscard]] bool IsSoughtInBlocks() const noexcept { return units_.size() <= 3; }

    // A bit for each unit of the block, the lowest for the first one, set where the unit is of the set.
    [[nodiscard]] unsigned PlacesInBlock(const Unit* block) const noexcept {
        __m128i places = PlacesInRegister(block);
        if constexpr (sizeof(Unit) == 2) places = _mm_packs_epi16(places, PlacesInRegister(block + 8));
        return static_cast<unsigned>(_mm_movemask_epi8(places));
    }

    [[nodiscard]] __m128i PlacesInRegister(const Unit* units) const noexcept {
        const __m128i all = _mm_loadu_si128(reinterpret_cast<const __m128i*>(units));
        return _mm_or_si128(_mm_or_si128(Equal(all, first_), Equal(all, second_)), Equal(all, third_));
    }

    [[nodiscard]] static __m128i InAllPlaces(Unit unit) noexcept {
        if constexpr (sizeof(Unit) == 2) return _mm_set1_epi16(static_cast<short>(unit));
        return _mm_set1_epi8(static_cast<char>(unit));
    }
    [[nodiscard]] static __m128i Equal(__m128i left, __m128i right) noexcept {
        if constexpr (sizeof(Unit) == 2) return _mm_cmpeq_epi16(left, right);
        return _mm_cmpeq_epi8(left, right);
    }

    std::basic_string_view<Unit> units_;
    __m128i first_{};
    __m128i second_{};
    __m128i third_{};
};

}  // namespace detail
