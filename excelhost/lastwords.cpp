#include "excelhost/lastwords.h"

#include "excelhost/callscope.h"
#include "excelhost/host.h"
#include "excelhost/served/table.h"

namespace excelhost {

std::string LastWords() {
    const CallScope* scope = CallScope::Current();
    if (scope == nullptr) return {};
    std::string words = "in " + scope->Name();
    const Host* host = Host::Current();
    if (host == nullptr) return words;
    words += "; its last calls into Excel:";
    const auto calls = host->LastCalls();
    if (calls.empty()) words += " none";
    for (const auto& [function, returnCode] : calls) {
        words += " " + FunctionName(function);
        if (returnCode != xlretSuccess) words += " (failed with code " + std::to_string(returnCode) + ")";
    }
    return words;
}

}  // namespace excelhost
