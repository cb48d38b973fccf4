// For 32-bit x86: all arguments go over the stack, doubles as two words; integers and pointers come back in
// EAX, doubles in ST(0). The stack pointer is restored from the frame, so it doesn't matter who removes the
// arguments, the function (stdcall) or the caller (cdecl).
#include "excelhost/machine/invoke.h"

#include <cstddef>
#include <cstring>
#include <vector>

// One body for both: what is in ST(0) or EAX when it returns is the result. The stack is at a multiple of 16
// when the function is called. The words are copied from the top down, since a stack grows page by page.
asm(R"(
    .text
    .p2align 4
    .globl _excelhost_call_words
    .globl excelhost_call_words
_excelhost_call_words:
excelhost_call_words:
    .cfi_startproc
    pushl %ebp
    .cfi_def_cfa_offset 8
    .cfi_offset 5, -8
    movl %esp, %ebp
    .cfi_def_cfa_register 5
    pushl %esi
    .cfi_offset 6, -12
    pushl %edi
    .cfi_offset 7, -16
    movl 16(%ebp), %ecx
    leal 0(,%ecx,4), %eax
    subl %eax, %esp
    andl $-16, %esp
    movl 12(%ebp), %esi
    leal -4(%esi,%ecx,4), %esi
    leal -4(%esp,%ecx,4), %edi
    std
    rep movsl
    cld
    call *8(%ebp)
    leal -8(%ebp), %esp
    popl %edi
    popl %esi
    popl %ebp
    .cfi_def_cfa 4, 4
    ret
    .cfi_endproc
)");

extern "C" std::uint32_t excelhost_call_words(FARPROC function, const std::uint32_t* words,
                                              std::size_t count);

namespace excelhost {

struct Signature::Plan {
    Passing result;
    std::vector<Passing> arguments;
};

Signature::Signature(Passing result, std::span<const Passing> arguments)
    : plan_(std::make_unique<Plan>(Plan{result, {arguments.begin(), arguments.end()}})) {}
Signature::~Signature() = default;
Signature::Signature(Signature&&) noexcept = default;
Signature& Signature::operator=(Signature&&) noexcept = default;

Word Signature::Call(FARPROC function, std::span<Word> arguments) const {
    std::vector<std::uint32_t> words;
    words.reserve(arguments.size() * 2);
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::size_t size = plan_->arguments[i] == Passing::Double ? 2 : 1;
        std::uint32_t halves[2];
        std::memcpy(halves, &arguments[i], sizeof halves);
        words.insert(words.end(), halves, halves + size);
    }
    if (plan_->result == Passing::Double) {
        using CallForDouble = double (*)(FARPROC, const std::uint32_t*, std::size_t);
        const auto call =
            reinterpret_cast<CallForDouble>(reinterpret_cast<void (*)()>(&excelhost_call_words));
        return WordFrom(call(function, words.data(), words.size()));
    }
    return WordFrom(static_cast<std::int64_t>(excelhost_call_words(function, words.data(), words.size())));
}

}  // namespace excelhost
