#include "support/probestatics.h"

namespace {

std::string Build() {
    return "built by an initialiser";
}
const std::string text = Build();

}  // namespace

const std::string& ProbeStaticText() {
    return text;
}
