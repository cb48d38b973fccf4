#include "excelhost/sheets.h"

#include <algorithm>
#include <utility>

namespace excelhost {
namespace {

template <class Range>
auto FindNamed(Range& range, TextView name) {
    return std::find_if(range.begin(), range.end(),
                        [&](const auto& item) { return SameName(item.name, name); });
}

}  // namespace

void Sheets::Add(OpenSheet sheet) {
    std::erase_if(sheets_, [&](const OpenSheet& other) { return other.id == sheet.id; });
    if (current_ == 0) current_ = sheet.id;
    sheets_.push_back(std::move(sheet));
}

const OpenSheet* Sheets::Find(IDSHEET id) const {
    const IDSHEET wanted = id == 0 ? current_ : id;
    const auto sheet =
        std::find_if(sheets_.begin(), sheets_.end(), [&](const OpenSheet& s) { return s.id == wanted; });
    return sheet != sheets_.end() ? &*sheet : nullptr;
}

const OpenSheet* Sheets::FindByName(TextView name) const {
    const auto sheet = std::find_if(sheets_.begin(), sheets_.end(), [&](const OpenSheet& s) {
        const TextView full = s.name;
        return SameName(full, name) || SameName(full.substr(full.find(WCHAR{']'}) + 1), name);
    });
    return sheet != sheets_.end() ? &*sheet : nullptr;
}

void Workbooks::SetFunction(TextView workbook, TextView function, WorkbookFunction body) {
    auto book = FindNamed(workbooks_, workbook);
    if (book == workbooks_.end()) book = workbooks_.insert(book, Workbook{Text(workbook), {}});
    auto place = FindNamed(book->functions, function);
    if (place == book->functions.end()) place = book->functions.insert(place, {Text(function), nullptr});
    place->body = std::make_shared<const WorkbookFunction>(std::move(body));
}

void Workbooks::Close(TextView workbook) {
    std::erase_if(workbooks_, [&](const Workbook& book) { return SameName(book.name, workbook); });
}

bool Workbooks::IsOpen(TextView workbook) const {
    return FindNamed(workbooks_, workbook) != workbooks_.end();
}

std::shared_ptr<const WorkbookFunction> Workbooks::Find(TextView workbook, TextView function) const {
    const auto book = FindNamed(workbooks_, workbook);
    if (book == workbooks_.end()) return nullptr;
    const auto found = FindNamed(book->functions, function);
    return found != book->functions.end() ? found->body : nullptr;
}

}  // namespace excelhost
