#include "objectmodel/detail/probes.h"

#include "objectmodel/detail/dispids.h"
#include "objectmodel/detail/forms.h"
#include "objectmodel/detail/latches.h"

constinit std::atomic<LONG> Formula2Available = -1;
constinit std::atomic<LONG> HasSpillAvailable = -1;

namespace {

// Sets the latch to 1 if `attempt` on the range ends without an exception, else to 0, unless it is set.
void Probe(std::atomic<LONG>& latch, IDispatch* range, void (*attempt)(IDispatch*)) noexcept {
    LONG unknown = -1;
    if (latch != unknown) return;
    LONG available = 0;
    try {
        const auto held = kestrolumen::ComPtr<IDispatch>::Share(range);
        attempt(held);
        available = 1;
    } catch (...) {
        available = 0;
    }
    latch.compare_exchange_strong(unknown, available);
}

}  // namespace

void ProbeFormula2(IDispatch* range) noexcept {
    Probe(Formula2Available, range, [](IDispatch* cells) {
        using namespace kestrolumen::detail;
        const kestrolumen::ComPtr<IDispatch> cell =
            getI(cells, Dispid::Range::Resize, Optional(IntValue{1}), Optional(IntValue{1}));
        const OwnedVariant formula = getV(cell, Dispid::Range::Formula2);
    });
}

void ProbeHasSpill(IDispatch* range) noexcept {
    Probe(HasSpillAvailable, range, [](IDispatch* cells) {
        const OwnedVariant hasSpill = kestrolumen::detail::getV(cells, Dispid::Range::HasSpill);
    });
}
