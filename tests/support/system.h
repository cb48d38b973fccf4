// What the other helpers need of the system, in the same words for both homes.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace support {

using Arguments = std::vector<std::string>;

// A process, by number or handle, and our file descriptors of its standard input and output. 0 and -1: none.
struct Process {
    std::intptr_t id = 0;
    int input = -1;
    int output = -1;
};

// Runs this program anew. The arguments hold no quotes and no backslash ahead of one.
[[nodiscard]] Process StartSelf(const Arguments& arguments);
// Waits for the end of a process and gives its exit code, or -1 if it was killed.
int WaitFor(std::intptr_t id);
void KillProcess(std::intptr_t id);

// Runs `body` on a thread with a stack of 160 KiB and, where the system counts them, 64 file descriptors.
void RunWithLittle(const std::function<void()>& body);

// A null value takes the variable away.
void SetVariable(const std::string& name, const char* value);

}  // namespace support
