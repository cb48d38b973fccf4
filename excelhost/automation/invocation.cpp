#include "excelhost/automation/invocation.h"

namespace excelhost::automation {

std::string Describe(const Invocation& invocation) {
    std::string line(invocation.object);
    line += ' ' + std::to_string(invocation.dispid);
    if ((invocation.flags & DISPATCH_METHOD) != 0) line += invocation.resultWanted ? " call" : " do";
    if ((invocation.flags & DISPATCH_PROPERTYGET) != 0) line += " get";
    if ((invocation.flags & DISPATCH_PROPERTYPUT) != 0) line += " put";
    if ((invocation.flags & DISPATCH_PROPERTYPUTREF) != 0) line += " putref";
    const std::size_t positional = invocation.arguments.size() - (invocation.namedValue ? 1 : 0);
    for (std::size_t i = 0; i < positional; ++i)
        line += (i == 0 ? " (" : ", ") + invocation.arguments[i].text;
    if (positional != 0) line += ')';
    if (invocation.namedValue) line += " = " + invocation.arguments.back().text;
    return line;
}

}  // namespace excelhost::automation
