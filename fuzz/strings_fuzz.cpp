// Four strings that share what they can, beside four of the standard library's that share nothing: whatever
// is done to one of them must show in that one alone.
#include "fuzz.h"

#include <algorithm>
#include <string>

using fuzz::Check;

namespace {

template <typename Unit>
class Strings {
  public:
    // Three bytes of the input are one step.
    void Step(unsigned operation, unsigned place, unsigned length) {
        CStringT<Unit>& text = texts_[operation % 4];
        std::basic_string<Unit>& model = models_[operation % 4];
        const CStringT<Unit>& other = texts_[operation / 4 % 4];
        const auto otherModel = models_[operation / 4 % 4];
        const std::size_t count = length % 8;
        const std::size_t at = place % (model.size() + 1), otherAt = length % (otherModel.size() + 1);
        const auto first = static_cast<int>(at), units = static_cast<int>(count);
        switch (operation / 16 % 8) {
            case 0:
                text = other;
                model = otherModel;
                break;
            case 1:
                text += other.GetString() + otherAt;
                model += otherModel.substr(otherAt);
                break;
            case 2:
                text = other.GetString() + otherAt;
                model = otherModel.substr(otherAt);
                break;
            case 3:
                text.Append(text.GetString() + at, text.GetLength() - first);
                model += model.substr(at);
                break;
            case 4:
                text.SetString(text.GetString() + at, text.GetLength() - first);
                model.erase(0, at);
                break;
            case 5:
                text.Replace('a', 'b');
                std::replace(model.begin(), model.end(), Unit{'a'}, Unit{'b'});
                break;
            case 6:
                std::fill_n(text.GetBufferSetLength(units), count, static_cast<Unit>('a' + place % 2));
                model.assign(count, static_cast<Unit>('a' + place % 2));
                break;
            default:
                text = other.Mid(static_cast<int>(otherAt), units) + text;
                model = otherModel.substr(otherAt, count) + model;
                break;
        }
        if (model.size() > 200) {
            text.Empty();
            model.clear();
        }
        for (std::size_t i = 0; i < 4; ++i) {
            const std::basic_string<Unit> content(texts_[i].GetString(),
                                                  static_cast<std::size_t>(texts_[i].GetLength()));
            Check(content == models_[i], "a string holds what was put into it, and no other's");
            Check(texts_[i].GetString()[content.size()] == 0, "it ends in a zero");
        }
    }

  private:
    CStringT<Unit> texts_[4];
    std::basic_string<Unit> models_[4];
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Strings<char> narrow;
    Strings<WCHAR> wide;
    for (std::size_t i = 0; i + 3 <= size; i += 3) {
        narrow.Step(data[i], data[i + 1], data[i + 2]);
        wide.Step(data[i], data[i + 1], data[i + 2]);
    }
    return 0;
}
