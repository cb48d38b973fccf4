#include "home.h"

namespace excelhost {

std::vector<std::string> ArgumentsFrom(int count, char** arguments) {
    return {arguments + 1, arguments + count};
}

void MakeStandardOutputBinary() {}

}  // namespace excelhost
