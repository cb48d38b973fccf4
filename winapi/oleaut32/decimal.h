// Exact decimal numbers: what VT_DECIMAL, VT_CY and the whole numbers hold, in one form.
#pragma once

#include "winapi/variant.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace winapi {

// A magnitude of 96 bits and its count of decimals, 0 to 28.
class Decimal {
  public:
    Decimal() noexcept = default;
    Decimal(bool isNegative, std::uint64_t whole, int decimals = 0) noexcept;
    explicit Decimal(const DECIMAL& value) noexcept;

    // A number in plain ASCII, such as "-12.5E+3". None when it isn't one whole number of 96 bits with at
    // most 28 decimals; what doesn't fit behind the point is cut off.
    [[nodiscard]] static std::optional<Decimal> FromText(std::string_view text) noexcept;

    [[nodiscard]] DECIMAL ToDecimal() const noexcept;
    [[nodiscard]] double ToDouble() const noexcept;
    // Without zeros at the end of the decimals.
    [[nodiscard]] std::string ToText() const;
    // Rounded half to even to so many decimals, and then without the point, as a number of 64 bits, if it is.
    [[nodiscard]] std::optional<std::uint64_t> Scaled(int decimals) const noexcept;
    [[nodiscard]] bool IsNegative() const noexcept { return negative; }
    [[nodiscard]] bool IsZero() const noexcept { return limbs == std::array<std::uint32_t, 3>{}; }

  private:
    static constexpr int maxDecimals = 28;

    [[nodiscard]] bool MultiplyAdd(std::uint32_t factor, std::uint32_t summand) noexcept;
    std::uint32_t DivideByTen() noexcept;
    void RoundTo(int decimals) noexcept;

    std::array<std::uint32_t, 3> limbs{};  // the lowest first
    int scale = 0;
    bool negative = false;
};

}  // namespace winapi
