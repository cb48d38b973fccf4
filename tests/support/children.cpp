#include "support/children.h"

#include <cstdio>
#include <map>
#include <stdexcept>
#include <string_view>
#include <utility>

#include <unistd.h>

#include <gmock/gmock.h>

namespace support {
namespace {

using Play = int (*)(const Arguments&);

std::map<std::string, Play>& Roles() {
    static std::map<std::string, Play> roles;
    return roles;
}

Arguments AsRole(const std::string& role, const Arguments& arguments) {
    Arguments all = {"test", "--role", role};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

void Close(int& descriptor) {
    if (descriptor >= 0) close(descriptor);
    descriptor = -1;
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

Child::Child(const std::string& role, const Arguments& arguments)
    : process_(StartSelf(AsRole(role, arguments))) {}
Child::~Child() {
    Kill();
    Close(process_.output);
}
Child::Child(Child&& other) noexcept : process_(std::exchange(other.process_, {})) {}

std::string Child::ReadLine() {
    std::string line;
    for (char byte = 0; read(process_.output, &byte, 1) == 1 && byte != '\n';) line += byte;
    if (line.ends_with('\r')) line.pop_back();
    return line;
}

void Child::WriteLine(const std::string& line) {
    const std::string text = line + "\n";
    const auto size = static_cast<unsigned>(text.size());
    if (write(process_.input, text.data(), size) != static_cast<int>(size)) {
        throw std::runtime_error("write to a child");
    }
}

int Child::Finish() {
    Close(process_.input);
    const std::intptr_t id = std::exchange(process_.id, 0);
    return id == 0 ? -1 : WaitFor(id);
}

void Child::Kill() {
    if (process_.id != 0) KillProcess(process_.id);
    Finish();
}

}  // namespace support

int main(int count, char** arguments) {
    if (count > 2 && std::string_view(arguments[1]) == "--role") {
        const auto role = support::Roles().find(arguments[2]);
        if (role != support::Roles().end()) return role->second({arguments + 3, arguments + count});
        std::fprintf(stderr, "no role is called '%s'\n", arguments[2]);
        return 2;
    }
    testing::InitGoogleMock(&count, arguments);
    return RUN_ALL_TESTS();
}
