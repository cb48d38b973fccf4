// The machine's users, as its user database (passwd) knows them.
#pragma once

#include <string>

#include <sys/types.h>

namespace winapi {

struct Account {
    uid_t id;
    std::string name;
    std::string home;
};

// Throws Failure{ERROR_NONE_MAPPED} for a number or a name that nobody has.
[[nodiscard]] Account AccountOf(uid_t id);
[[nodiscard]] Account AccountNamed(const std::string& name);

// The user's folder for one kind of data, as the XDG base directory specification has it: what the variable
// says, unless that is no absolute path, else `fallback` in the home folder.
[[nodiscard]] std::string UserFolder(const char* variable, const char* fallback);

}  // namespace winapi
