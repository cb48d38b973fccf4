// The page of a report, made by the build from page/: everything ahead of the journal, and behind it.
#pragma once

#include <string_view>

namespace excelhost {

extern const std::string_view kPageHead;
extern const std::string_view kPageTail;

}  // namespace excelhost
