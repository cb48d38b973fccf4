#include "winapi/crt.h"

#include <string_view>

namespace {

struct Field {
    WCHAR* text;
    std::size_t size;

    // Either left out, or with room for at least the terminator.
    [[nodiscard]] bool IsValid() const noexcept { return (text == nullptr) == (size == 0); }
    [[nodiscard]] bool Holds(std::u16string_view part) const noexcept {
        return text == nullptr || part.size() < size;
    }
    void Set(std::u16string_view part) const noexcept {
        if (text == nullptr || size == 0) return;
        text[part.copy(text, part.size())] = u'\0';
    }
};

// Up to `count` units from the front of `rest`, which loses them.
std::u16string_view Take(std::u16string_view& rest, std::size_t count) noexcept {
    const std::u16string_view part = rest.substr(0, count);
    rest.remove_prefix(part.size());
    return part;
}

}  // namespace

errno_t _wsplitpath_s(const WCHAR* path, WCHAR* drive, std::size_t driveSize, WCHAR* dir, std::size_t dirSize,
                      WCHAR* name, std::size_t nameSize, WCHAR* extension,
                      std::size_t extensionSize) noexcept {
    const Field fields[] = {{drive, driveSize}, {dir, dirSize}, {name, nameSize}, {extension, extensionSize}};
    errno_t error = path == nullptr ? EINVAL : 0;
    for (const Field& field : fields) {
        if (!field.IsValid()) error = EINVAL;
    }

    std::u16string_view parts[4];
    if (error == 0) {
        std::u16string_view rest = path;
        constexpr auto none = std::u16string_view::npos;
        parts[0] = Take(rest, rest.size() >= 2 && rest[1] == u':' ? 2 : 0);
        parts[1] = Take(rest, rest.find_last_of(u"\\/") + 1);  // none + 1 is 0
        const std::size_t point = rest.rfind(u'.');
        parts[2] = Take(rest, point == none ? rest.size() : point);
        parts[3] = rest;
        for (std::size_t i = 0; i < 4; ++i) {
            if (!fields[i].Holds(parts[i])) error = ERANGE;
        }
    }

    for (std::size_t i = 0; i < 4; ++i) fields[i].Set(error == 0 ? parts[i] : std::u16string_view());
    if (error != 0) errno = error;
    return error;
}
