// Names that add-ins define for themselves.
#include "excelhost/served/table.h"
#include "excelhost/state.h"

namespace excelhost {
namespace {

// SET.NAME(name, value); without a value the name goes.
Outcome SetName(HostState& state, Operands operands) {
    const auto name = TextOf(*operands[0]);
    if (!name || name->empty()) return Outcome::Error(xlerrValue, "the name is no text");
    const std::lock_guard lock(state.mutex);
    if (operands.size() < 2 || IsLeftOut(*operands[1])) {
        state.names.erase(*name);
    } else {
        state.names.insert_or_assign(*name, ValueFrom(*operands[1]));
    }
    return Outcome::Of(true);
}

// xlDefineBinaryName(name, data): kept for as long as the host lives; without data the name goes.
Outcome DefineBinaryName(HostState& state, Operands operands) {
    const auto name = TextOf(*operands[0]);
    if (!name || name->empty()) return Outcome::Failed(xlretInvXloper, "the name is no text");
    const std::lock_guard lock(state.mutex);
    if (operands.size() < 2 || IsLeftOut(*operands[1])) {
        state.binaryNames.erase(*name);
        return Outcome::Of(true);
    }
    const auto& data = operands[1]->val.bigdata;
    if (TypeOf(*operands[1]) != xltypeBigData || data.cbData < 0 ||
        (data.h.lpbData == nullptr && data.cbData != 0)) {
        return Outcome::Failed(xlretInvXloper, "the data is none");
    }
    state.binaryNames[*name].assign(data.h.lpbData, data.h.lpbData + data.cbData);
    return Outcome::Of(true);
}

// xlGetBinaryName(name): the data's handle, which is its address. It is the host's and holds until the name is defined
// anew.
Outcome GetBinaryName(HostState& state, Operands operands) {
    const auto name = TextOf(*operands[0]);
    if (!name) return Outcome::Failed(xlretInvXloper, "the name is no text");
    const std::lock_guard lock(state.mutex);
    const auto found = state.binaryNames.find(*name);
    if (found == state.binaryNames.end()) return Outcome::Failed(xlretFailed, "the name isn't defined");
    const auto& data = found->second;
    return Outcome::Of(BigData{data.data(), static_cast<std::int32_t>(data.size())});
}

constexpr ServedFunction kTable[] = {
    {88, "xlfSetName", 1, 2, From::Macros, SetName},
    {xlSpecial | 12, "xlDefineBinaryName", 1, 2, From::Anywhere, DefineBinaryName},
    {xlSpecial | 13, "xlGetBinaryName", 1, 1, From::Anywhere, GetBinaryName},
};

}  // namespace

std::span<const ServedFunction> ServedNames() {
    return kTable;
}

}  // namespace excelhost
