#include "excelhost/automation/block.h"

#include "excelhost/automation/calculation.h"

#include <algorithm>

namespace excelhost::automation {
namespace {

constexpr std::int64_t largestBlock = std::int64_t{1} << 20;  // cells that go in one VARIANT or one write

void CheckSize(std::int64_t cells) {
    if (cells > largestBlock) throw Refusal::Result(E_OUTOFMEMORY);
}

template <class Action>
void ForEach(const Rect& rect, const Action& action) {
    for (LONG row = rect.row1; row <= rect.row2; ++row) {
        for (LONG column = rect.column1; column <= rect.column2; ++column) action(row, column);
    }
}

void CheckResult(HRESULT result) {
    if (FAILED(result)) throw Refusal::Result(result);
}

// The rows and columns of an array with two dimensions, as a rectangle of its indices.
Rect IndexBounds(SAFEARRAY* array) {
    if (SafeArrayGetDim(array) != 2) throw Refusal::Result(DISP_E_TYPEMISMATCH);
    Rect bounds;
    CheckResult(SafeArrayGetLBound(array, 1, &bounds.row1));
    CheckResult(SafeArrayGetUBound(array, 1, &bounds.row2));
    CheckResult(SafeArrayGetLBound(array, 2, &bounds.column1));
    CheckResult(SafeArrayGetUBound(array, 2, &bounds.column2));
    return bounds;
}

Variant Element(SAFEARRAY* array, LONG row, LONG column) {
    LONG indices[] = {row, column};
    VARIANT element;
    VariantInit(&element);
    CheckResult(SafeArrayGetElement(array, indices, &element));
    Variant copy(element);
    VariantClear(&element);
    return copy;
}

std::int64_t Overlap(const Rect& a, const Rect& b) noexcept {
    const Rect common{std::max(a.row1, b.row1), std::max(a.column1, b.column1), std::min(a.row2, b.row2),
                      std::min(a.column2, b.column2)};
    return a.Meets(b) ? common.Cells() : 0;
}

Variant AllOrNone(std::int64_t with, std::int64_t without) {
    if (with > 0 && without > 0) return Variant::Null();
    return Variant(with > 0);
}

}  // namespace

Variant ReadBlock(const RangeNode& range, const std::function<Variant(LONG, LONG)>& read) {
    const Rect& rect = range.First();
    if (rect.Cells() == 1) return read(rect.row1, rect.column1);
    CheckSize(rect.Cells());
    SAFEARRAYBOUND bounds[] = {{static_cast<ULONG>(rect.Rows()), 1}, {static_cast<ULONG>(rect.Columns()), 1}};
    SAFEARRAY* array = SafeArrayCreate(VT_VARIANT, 2, bounds);
    if (array == nullptr) throw std::bad_alloc();
    Variant block = Variant::AdoptArray(array);
    ForEach(rect, [&](LONG row, LONG column) {
        LONG indices[] = {row - rect.row1 + 1, column - rect.column1 + 1};
        const Variant value = read(row, column);
        CheckResult(SafeArrayPutElement(array, indices, const_cast<VARIANT*>(&value.Get())));
    });
    return block;
}

void WriteBlock(const RangeNode& range, const VARIANT& value,
                const std::function<void(LONG, LONG, const VARIANT&)>& write) {
    if ((value.vt & VT_ARRAY) == 0) {
        for (const Rect& area : range.areas) {
            CheckSize(area.Cells());
            ForEach(area, [&](LONG row, LONG column) { write(row, column, value); });
        }
        return;
    }
    if (value.vt != (VT_ARRAY | VT_VARIANT)) throw Refusal::Result(DISP_E_TYPEMISMATCH);
    const Rect& rect = range.First();
    CheckSize(rect.Cells());
    const Rect indices = IndexBounds(value.parray);
    const Variant outside = ErrorVariant(xlerrNA);
    ForEach(rect, [&](LONG row, LONG column) {
        const LONG arrayRow = row - rect.row1 + indices.row1;
        const LONG arrayColumn = column - rect.column1 + indices.column1;
        const bool inside = indices.Contains(arrayRow, arrayColumn);
        write(row, column, (inside ? Element(value.parray, arrayRow, arrayColumn) : outside).Get());
    });
}

Variant Uniform(const RangeNode& range, const std::function<bool(const Cell&)>& property) {
    static const Cell untouched;
    std::int64_t with = 0;
    std::int64_t without = 0;
    for (const Rect& area : range.areas) {
        std::int64_t stored = 0;
        for (const auto& [place, cell] : range.sheet.cells) {
            if (!area.Contains(place.first, place.second)) continue;
            ++stored;
            ++(property(cell) ? with : without);
        }
        (property(untouched) ? with : without) += area.Cells() - stored;
    }
    return AllOrNone(with, without);
}

Variant Covered(const RangeNode& range, const std::vector<Rect>& rectangles) {
    std::int64_t covered = 0;
    std::int64_t all = 0;
    for (const Rect& area : range.areas) {
        all += area.Cells();
        for (const Rect& rect : rectangles) covered += Overlap(area, rect);
    }
    return AllOrNone(covered, all - covered);
}

const Rect* Covering(const RangeNode& range, const std::vector<Rect>& rectangles) noexcept {
    const auto found = std::ranges::find_if(rectangles, [&](const Rect& rect) {
        return rect.Contains(range.First().row1, range.First().column1);
    });
    return found == rectangles.end() ? nullptr : &*found;
}

}  // namespace excelhost::automation
