// A name that all processes of the machine see, and that goes away with its last holder, however that ends.
//
// A name is a file. Each holder keeps an open file description of it with a shared flock, so that a failed
// try for an exclusive one says that somebody else holds the name. Whoever looks does so under an exclusive
// flock on the folder, so that making, opening and giving up a name never overlap. The kernel drops the locks
// of a process that dies; the file it leaves behind holds no lock, counts as absent and goes at the next
// look. A second lock, on the file's first byte, makes a holder the name's owner.
#pragma once

#include "descriptor.h"

#include <string>
#include <string_view>

namespace winapi {

enum class Ownership { refused, taken, takenFromTheDead };

class NameFile {
  public:
    struct Opened;

    // Takes hold of a name that may or may not exist; a new one is owned at once if `owned` says so.
    [[nodiscard]] static Opened Create(std::u16string_view name, bool owned);
    // Takes hold of a name that exists, or throws Failure{ERROR_FILE_NOT_FOUND}.
    [[nodiscard]] static NameFile Open(std::u16string_view name);

    // Gives up the hold, and with the last one the name. Gives up ownership as the dead do.
    ~NameFile();
    NameFile(NameFile&&) noexcept = default;
    NameFile& operator=(NameFile&&) = delete;

    [[nodiscard]] Ownership TryToOwn() const;
    void Disown() const noexcept;
    // Gives up ownership in such a way that the next owner is told.
    void Abandon() const noexcept;

  private:
    struct Place {
        std::string folder;
        std::string file;
        bool global;
    };
    NameFile(Place place, Descriptor descriptor) noexcept;
    static Place PlaceOf(std::u16string_view name);

    Place place_;
    Descriptor descriptor_;
    int process_;  // a child made by fork shares the description: only this process may give up the hold
};

struct NameFile::Opened {
    NameFile file;
    bool existed;
};

}  // namespace winapi
