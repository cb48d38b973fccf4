// A call of a function whose signature is known at run time only.
#pragma once

#include "excelhost/typetext.h"

#include <windows.h>

#include <cstdint>
#include <memory>
#include <span>

namespace excelhost {

// An argument or a result as the machine passes it, whatever its type: integers are extended to eight bytes
// by their sign.
union Word {
    std::int64_t integer;
    double number;
    void* pointer;
};
static_assert(sizeof(Word) == 8);

[[nodiscard]] inline Word WordFrom(std::int64_t integer) noexcept {
    Word word{};
    word.integer = integer;
    return word;
}
[[nodiscard]] inline Word WordFrom(double number) noexcept {
    Word word{};
    word.number = number;
    return word;
}
[[nodiscard]] inline Word WordFrom(const void* pointer) noexcept {
    Word word{};
    word.pointer = const_cast<void*>(pointer);
    return word;
}

// How a call with such arguments is made, worked out once for many calls. On 32-bit Windows functions under
// either convention, stdcall and cdecl, may be called.
class Signature {
  public:
    Signature(Passing result, std::span<const Passing> arguments);
    ~Signature();
    Signature(Signature&&) noexcept;
    Signature& operator=(Signature&&) noexcept;

    // One word an argument. Of the result the bytes that its type has mean something. An exception that
    // leaves the function passes through.
    [[nodiscard]] Word Call(FARPROC function, std::span<Word> arguments) const;

  private:
    struct Plan;
    std::unique_ptr<Plan> plan_;
};

}  // namespace excelhost
