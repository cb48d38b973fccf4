// What the add-in shows to the world, in the order of the letters' codes.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

inline const std::vector<std::string> exportNames = {
    "InitializeXlaInformationVB",
    "InitializeXlaInformationW",
    "NetOutputPrediction",
    "NetOutputProbabilityOfCategory",
    "NetOutputProbabilityOfPrediction",
    "UninitializeXlaInformation",
    "xlAutoAdd",
    "xlAutoClose",
    "xlAutoFree",
    "xlAutoOpen",
    "xlAutoRemove",
};

// A file that is laid out in structures; it fails the test to read behind its end.
class FileImage {
  public:
    explicit FileImage(const std::filesystem::path& path) {
        std::ifstream file(path, std::ios::binary);
        bytes_.assign(std::istreambuf_iterator<char>(file), {});
    }

    template <typename T>
    [[nodiscard]] const T* At(std::size_t offset, std::size_t count = 1) const {
        if (offset > bytes_.size() || (bytes_.size() - offset) / sizeof(T) < count) {
            throw std::runtime_error("the file ends early");
        }
        return reinterpret_cast<const T*>(bytes_.data() + offset);
    }

    [[nodiscard]] std::string Text(std::size_t offset) const { return At<char>(offset); }

  private:
    std::vector<char> bytes_;
};
