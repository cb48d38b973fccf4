// The heap of one loaded module under a test's control, on Windows: its imports of malloc and its kin lead here. What
// the module allocated before isn't counted.
#pragma once

#include <windows.h>

#include <cstddef>

class ImportedHeap {
  public:
    // One at a time; the module outlives it.
    explicit ImportedHeap(HMODULE module);
    ~ImportedHeap();
    ImportedHeap(const ImportedHeap&) = delete;
    ImportedHeap& operator=(const ImportedHeap&) = delete;

    // Lets the nth allocation from now on fail, once; 0 for none.
    void FailNth(std::size_t nth) noexcept;
    // Whether that allocation has been asked for.
    [[nodiscard]] bool Struck() const noexcept;
    [[nodiscard]] std::size_t LiveBlocks() const noexcept;

  private:
    void Redirect(bool here);

    HMODULE module_;
};
