// For 64-bit Windows: each argument has a place of eight bytes, the first four in registers. Whether a
// function looks for one of them in RCX or in XMM0 its type alone says, so both are loaded.
#include "excelhost/machine/invoke.h"

#include <cstddef>
#include <vector>

// The words are at least four; they are copied from the top down, since a stack grows page by page.
// Registers: RCX the function, RDX the words, R8 their number.
asm(R"(
    .text
    .p2align 4
    .globl excelhost_call_words
    .def excelhost_call_words; .scl 2; .type 32; .endef
    .seh_proc excelhost_call_words
excelhost_call_words:
    pushq %rbp
    .seh_pushreg %rbp
    pushq %rsi
    .seh_pushreg %rsi
    pushq %rdi
    .seh_pushreg %rdi
    movq %rsp, %rbp
    .seh_setframe %rbp, 0
    .seh_endprologue
    movq %rcx, %rax
    movq %r8, %rcx
    leaq 0(,%r8,8), %r9
    subq %r9, %rsp
    andq $-16, %rsp
    leaq -8(%rdx,%r8,8), %rsi
    leaq -8(%rsp,%r8,8), %rdi
    std
    rep movsq
    cld
    movq 0(%rsp), %rcx
    movq 8(%rsp), %rdx
    movq 16(%rsp), %r8
    movq 24(%rsp), %r9
    movq %rcx, %xmm0
    movq %rdx, %xmm1
    movq %r8, %xmm2
    movq %r9, %xmm3
    call *%rax
    nop
    leaq 0(%rbp), %rsp
    popq %rdi
    popq %rsi
    popq %rbp
    ret
    .seh_endproc
)");

extern "C" std::int64_t excelhost_call_words(FARPROC function, const excelhost::Word* words,
                                             std::size_t count);

namespace excelhost {

struct Signature::Plan {
    Passing result;
};

Signature::Signature(Passing result, std::span<const Passing>)
    : plan_(std::make_unique<Plan>(Plan{result})) {}
Signature::~Signature() = default;
Signature::Signature(Signature&&) noexcept = default;
Signature& Signature::operator=(Signature&&) noexcept = default;

Word Signature::Call(FARPROC function, std::span<Word> arguments) const {
    constexpr std::size_t kRegisters = 4;
    std::vector<Word> few;
    if (arguments.size() < kRegisters) {
        few.assign(arguments.begin(), arguments.end());
        few.resize(kRegisters);
        arguments = few;
    }
    if (plan_->result == Passing::Double) {
        using CallForDouble = double (*)(FARPROC, const Word*, std::size_t);
        const auto call =
            reinterpret_cast<CallForDouble>(reinterpret_cast<void (*)()>(&excelhost_call_words));
        return WordFrom(call(function, arguments.data(), arguments.size()));
    }
    return WordFrom(excelhost_call_words(function, arguments.data(), arguments.size()));
}

}  // namespace excelhost
