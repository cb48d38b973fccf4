// The journal behind a report: its room, its threads, and texts that could end the page.
#include "excelhost/journal.h"

#include <gmock/gmock.h>

#include <map>
#include <sstream>
#include <thread>

namespace excelhost {
namespace {

using testing::HasSubstr;
using testing::Not;

TEST(JournalTest, BeyondItsRoomCallsAreCountedAndThoseWithAMarkAreTold) {
    std::ostringstream out;
    Journal journal(out);
    for (int i = 0; i < 200'000; ++i) {
        journal.Begin({CallKind::Function, "F", "operand " + std::to_string(i), {}});
        const bool isMarked = i % 100 == 0;
        journal.End({std::to_string(i), xlretSuccess, isMarked ? "changed" : "", isMarked ? kAltered : 0U});
    }
    const std::string text = out.str();
    EXPECT_LT(text.size(), 4'150'000U);
    EXPECT_EQ(journal.Count(), 200'000U);
    EXPECT_THAT(journal.Functions(), HasSubstr("[\"F\",200000,"));
    EXPECT_THAT(text, HasSubstr("\n11,199900,1,0,\"operand 199900\","));
    EXPECT_THAT(text, Not(HasSubstr("operand 199901")));
}

// Each thread's calls are told under its number and end in their own order.
TEST(JournalTest, CallsOfSeveralThreadsKeepTheirEnds) {
    std::ostringstream out;
    {
        Journal journal(out);
        const auto call = [&journal](const std::string& name) {
            for (int i = 0; i < 500; ++i) {
                journal.Begin({CallKind::Function, name, {}, {}});
                journal.Begin({CallKind::Callback, "inner", {}, {}});
                journal.End({"of " + name, xlretSuccess, {}, 0});
                journal.End({"result of " + name, xlretSuccess, {}, 0});
            }
        };
        std::jthread first(call, "first");
        std::jthread second(call, "second");
    }
    std::map<std::string, std::string> names;  // of a thread's functions, by their results
    std::istringstream lines(out.str());
    std::string thread = "0";
    std::map<std::string, int> depths;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("4,")) thread = line.substr(2);
        if (line.starts_with("0,") || line.starts_with("1,")) ++depths[thread];
        if (line.starts_with("3,")) --depths[thread];
        EXPECT_GE(depths[thread], 0) << line;
        if (line.find("\"result of ") != std::string::npos) names.emplace(thread, line);
    }
    EXPECT_EQ(names.size(), 2U);
    for (const auto& [number, depth] : depths) EXPECT_EQ(depth, 0) << number;
}

TEST(JournalTest, NoTextCanEndTheScriptThatItStandsIn) {
    std::string json;
    AppendJson(json, std::string_view("</script>\"\\\0\r\n\x7F\u00e4", 17));
    EXPECT_EQ(json, "\"\\u003c/script>\\\"\\\\\\u0000\\u000d\\u000a\\u007f\u00e4\"");
}

TEST(JournalTest, ArraysAreToldByTheirFirstElements) {
    EXPECT_EQ(DescribeWithElements(Array{2, 2, {1.0, Text(TEXT("a")), true, ErrorValue{xlerrNA}}}),
              "2x2 array {1,\"a\";TRUE,#N/A}");
    EXPECT_EQ(DescribeWithElements(Array{1, 9, std::vector<Value>(9, 1.5)}),
              "1x9 array {1.5,1.5,1.5,1.5,1.5,1.5,1.5,1.5,...}");
}

}  // namespace
}  // namespace excelhost
