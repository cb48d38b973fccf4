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

// Where a name's file is. Names that mean the same have the same place.
struct NamePlace {
    std::string folder;
    std::string file;
    bool isGlobal;

    // Throws Failure for what no name can be.
    explicit NamePlace(std::u16string_view name);
    friend bool operator==(const NamePlace&, const NamePlace&) = default;
};

enum class Ownership { refused, taken, takenFromTheDead };

class NameFile {
  public:
    // Takes hold of a name. One that doesn't exist is made, and owned at once if `owned` says so; without
    // `mayMake` it leads to Failure{ERROR_FILE_NOT_FOUND}.
    NameFile(const NamePlace& place, bool mayMake, bool owned);
    // Gives up the hold, and with the last one the name. Gives up ownership as the dead do.
    ~NameFile();
    NameFile(const NameFile&) = delete;
    NameFile& operator=(const NameFile&) = delete;

    [[nodiscard]] const NamePlace& Place() const noexcept { return place_; }
    [[nodiscard]] bool Existed() const noexcept { return existed_; }

    [[nodiscard]] Ownership TryToOwn() const;
    void Disown() const noexcept;
    // Gives up ownership in such a way that the next owner is told.
    void Abandon() const noexcept;

  private:
    const NamePlace place_;
    const int
        process_;  // a child made by fork shares the description: only this process may give up the hold
    Descriptor descriptor_;
    bool existed_ = false;
};

}  // namespace winapi
