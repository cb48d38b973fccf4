// By libffi, which knows the calling conventions of the machines that Linux runs on.
#include "excelhost/machine/invoke.h"

#include <ffi.h>

#include <stdexcept>
#include <vector>

namespace excelhost {
namespace {

ffi_type* FfiType(Passing passing) {
    switch (passing) {
        case Passing::Short:
            return &ffi_type_sint16;
        case Passing::UnsignedShort:
            return &ffi_type_uint16;
        case Passing::Long:
            return &ffi_type_sint32;
        case Passing::Double:
            return &ffi_type_double;
        case Passing::Pointer:
            return &ffi_type_pointer;
        default:
            return &ffi_type_void;
    }
}

}  // namespace

struct Signature::Plan {
    std::vector<ffi_type*> types;
    ffi_cif interface {};
};

Signature::Signature(Passing result, std::span<const Passing> arguments) : plan_(std::make_unique<Plan>()) {
    for (const Passing passing : arguments) plan_->types.push_back(FfiType(passing));
    const auto count = static_cast<unsigned>(plan_->types.size());
    if (ffi_prep_cif(&plan_->interface, FFI_DEFAULT_ABI, count, FfiType(result), plan_->types.data()) !=
        FFI_OK) {
        throw std::runtime_error("a function of this signature can't be called here");
    }
}
Signature::~Signature() = default;
Signature::Signature(Signature&&) noexcept = default;
Signature& Signature::operator=(Signature&&) noexcept = default;

Word Signature::Call(FARPROC function, std::span<Word> arguments) const {
    std::vector<void*> places;
    places.reserve(arguments.size());
    for (Word& argument : arguments) places.push_back(&argument);
    Word result{};
    ffi_call(&plan_->interface, reinterpret_cast<void (*)()>(function), &result, places.data());
    return result;
}

}  // namespace excelhost
