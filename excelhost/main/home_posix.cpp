#include "home.h"

#include <csignal>

namespace excelhost {

std::vector<std::string> ArgumentsFrom(int count, char** arguments) {
    return {arguments + 1, arguments + count};
}

std::filesystem::path OwnFolder() {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path();
}

void PrepareStreams() {
    std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace excelhost
