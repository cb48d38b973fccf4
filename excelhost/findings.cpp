#include "excelhost/findings.h"

#include <algorithm>
#include <utility>

namespace excelhost {

void Findings::Add(std::string text, bool isFault, std::optional<std::size_t> call) {
    const auto same =
        std::find_if(all_.begin(), all_.end(), [&](const Finding& f) { return f.text == text; });
    if (same != all_.end()) {
        ++same->count;
    } else {
        all_.push_back({std::move(text), isFault, 1, call});
    }
}

std::string Describe(const Finding& finding) {
    return finding.text + (finding.count > 1 ? " (" + std::to_string(finding.count) + " times)" : "");
}

}  // namespace excelhost
