#include "excelhost/registrations.h"

#include <algorithm>
#include <utility>

namespace excelhost {
bool NameOrder::operator()(TextView a, TextView b) const noexcept {
    const auto capital = [](WCHAR unit) {
        return unit >= 'a' && unit <= 'z' ? static_cast<WCHAR>(unit - ('a' - 'A')) : unit;
    };
    return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                        [&](WCHAR x, WCHAR y) { return capital(x) < capital(y); });
}

void Registrations::AddModule(Module module) {
    std::erase_if(modules_, [&](const Module& other) { return SameName(other.fileName, module.fileName); });
    modules_.push_back(std::move(module));
}

const Module* Registrations::FindModule(TextView pathOrFileName) const {
    const auto find = [&](Text Module::*name, TextView wanted) -> const Module* {
        const auto found = std::find_if(modules_.begin(), modules_.end(),
                                        [&](const Module& module) { return SameName(module.*name, wanted); });
        return found != modules_.end() ? &*found : nullptr;
    };
    const Module* module = find(&Module::path, pathOrFileName);
    return module != nullptr ? module : find(&Module::fileName, FileNameOf(pathOrFileName));
}

std::shared_ptr<const Registration> Registrations::Add(Registration registration) {
    registration.id = nextId_++;
    auto kept = std::make_shared<const Registration>(std::move(registration));
    all_.push_back(kept);
    byName_[kept->functionText].push_back(kept);
    return kept;
}

bool Registrations::Remove(double id) {
    const auto registration = FindById(id);
    if (!registration) return false;
    std::erase(all_, registration);
    const auto named = byName_.find(registration->functionText);
    std::erase(named->second, registration);
    if (named->second.empty()) byName_.erase(named);
    return true;
}

std::size_t Registrations::RemoveModule(TextView pathOrFileName) {
    std::vector<double> ids;
    for (const auto& registration : all_) {
        if (SameName(FileNameOf(registration->module), FileNameOf(pathOrFileName))) {
            ids.push_back(registration->id);
        }
    }
    for (const double id : ids) Remove(id);
    return ids.size();
}

std::shared_ptr<const Registration> Registrations::Find(TextView functionText) const {
    const auto named = byName_.find(functionText);
    return named != byName_.end() ? named->second.back() : nullptr;
}

std::shared_ptr<const Registration> Registrations::FindById(double id) const {
    const auto found = std::find_if(all_.begin(), all_.end(), [&](const auto& r) { return r->id == id; });
    return found != all_.end() ? *found : nullptr;
}

std::shared_ptr<const Registration> Registrations::FindProcedure(const Module& module,
                                                                 TextView procedure) const {
    const auto found = std::find_if(all_.rbegin(), all_.rend(), [&](const auto& r) {
        return r->procedure == procedure && SameName(FileNameOf(r->module), module.fileName);
    });
    return found != all_.rend() ? *found : nullptr;
}

TextView FileNameOf(TextView path) noexcept {
    static constexpr WCHAR kSeparators[] = {'/', '\\', ':', 0};
    const auto separator = path.find_last_of(kSeparators);
    return separator != TextView::npos ? path.substr(separator + 1) : path;
}

}  // namespace excelhost
