#include "support/children.h"

#include <cstdio>
#include <map>
#include <string_view>

#include <gmock/gmock.h>

namespace support {
namespace {

using Play = int (*)(const Arguments&);

std::map<std::string, Play>& Roles() {
    static std::map<std::string, Play> roles;
    return roles;
}

int PlayRole(const Arguments& arguments) {
    const auto role = Roles().find(arguments.front());
    if (role == Roles().end()) {
        std::fprintf(stderr, "no role is called '%s'\n", arguments.front().c_str());
        return 2;
    }
    return role->second({arguments.begin() + 1, arguments.end()});
}

}  // namespace

Role::Role(const char* name, Play play) {
    Roles().emplace(name, play);
}

void Say(const std::string& line) {
    std::fputs((line + "\n").c_str(), stdout);
    std::fflush(stdout);
}

std::string Hear() {
    std::string line;
    for (int c = std::getchar(); c != EOF && c != '\n'; c = std::getchar()) line += static_cast<char>(c);
    return line;
}

}  // namespace support

int main(int count, char** arguments) {
    if (count > 2 && std::string_view(arguments[1]) == "--role") {
        return support::PlayRole({arguments + 2, arguments + count});
    }
    testing::InitGoogleMock(&count, arguments);
    return RUN_ALL_TESTS();
}
