// Sets of single units, such as the delimiters of tokens.
#pragma once

#include "text/detail/compiler.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <string_view>

namespace kestrolumen::detail {

// Up to three units, sought in blocks of 16.
template <typename Unit>
class BlockOfUnits {
  public:
    static constexpr std::ptrdiff_t size = 16;

    constexpr BlockOfUnits() noexcept = default;
    BlockOfUnits(Unit first, Unit second, Unit third) noexcept
        : first_(InAllPlaces(first)), second_(InAllPlaces(second)), third_(InAllPlaces(third)) {}

    // A bit for each unit of the block, the lowest for the first one, set where the unit is one of the three.
    [[nodiscard]] unsigned PlacesIn(const Unit* block) const noexcept;

  private:
#if KESTROLUMEN_SSE2
    using Register = __m128i;

    [[nodiscard]] Register PlacesInRegister(const Unit* units) const noexcept {
        const Register all = _mm_loadu_si128(reinterpret_cast<const Register*>(units));
        return _mm_or_si128(_mm_or_si128(Equal(all, first_), Equal(all, second_)), Equal(all, third_));
    }
    [[nodiscard]] static Register InAllPlaces(Unit unit) noexcept {
        if constexpr (sizeof(Unit) == 2) return _mm_set1_epi16(static_cast<short>(unit));
        return _mm_set1_epi8(static_cast<char>(unit));
    }
    [[nodiscard]] static Register Equal(Register left, Register right) noexcept {
        if constexpr (sizeof(Unit) == 2) return _mm_cmpeq_epi16(left, right);
        return _mm_cmpeq_epi8(left, right);
    }
#else
    using Register = Unit;

    [[nodiscard]] static Register InAllPlaces(Unit unit) noexcept {
        return unit;
    }
#endif

    Register first_{};
    Register second_{};
    Register third_{};
};

template <typename Unit>
unsigned BlockOfUnits<Unit>::PlacesIn(const Unit* block) const noexcept {
#if KESTROLUMEN_SSE2
    Register places = PlacesInRegister(block);
    if constexpr (sizeof(Unit) == 2) places = _mm_packs_epi16(places, PlacesInRegister(block + 8));
    return static_cast<unsigned>(_mm_movemask_epi8(places));
#else
    unsigned places = 0;
    for (unsigned i = 0; i < size; ++i) {
        const bool isOne = (block[i] == first_) | (block[i] == second_) | (block[i] == third_);
        places |= static_cast<unsigned>(isOne) << i;
    }
    return places;
#endif
}

// A set of units, which is small as a rule. It reads the units of the view that it was made of.
template <typename Unit>
class UnitSet {
  public:
    explicit UnitSet(std::basic_string_view<Unit> units) noexcept : units_(units) {
        if (!units.empty() && IsSoughtInBlocks()) {
            blocks_ = BlockOfUnits<Unit>(units.front(), units[units.size() / 2], units.back());
        }
    }
    [[nodiscard]] bool Holds(Unit unit) const noexcept { return units_.find(unit) != units_.npos; }

    // The first place of a unit of the set, or `end`. A set of up to three is sought in whole blocks.
    [[nodiscard]] const Unit* FindIn(const Unit* begin, const Unit* end) const noexcept {
        if (units_.empty()) return end;
        if (IsSoughtInBlocks()) {
            for (; end - begin >= BlockOfUnits<Unit>::size; begin += BlockOfUnits<Unit>::size) {
                if (const unsigned places = blocks_.PlacesIn(begin); places != 0)
                    return begin + std::countr_zero(places);
            }
        }
        return std::find_if(begin, end, [this](Unit unit) { return Holds(unit); });
    }

  private:
    [[nodiscard]] bool IsSoughtInBlocks() const noexcept { return units_.size() <= 3; }

    std::basic_string_view<Unit> units_;
    BlockOfUnits<Unit> blocks_;
};

}  // namespace kestrolumen::detail
