// Searching in a Range: for texts, for cells of a kind, for the number that leads to a goal.
#include "excelhost/automation/rangecalls.h"
#include "excelhost/automation/server.h"

#include <algorithm>
#include <cmath>

namespace excelhost::automation::ranges {
namespace {

// The numbers of Excel's enumerations that are answered to.
constexpr LONG lookWhole = 1;
constexpr LONG kindConstants = 2, kindBlanks = 4, kindLastCell = 11, kindFormulas = -4123,
               kindComments = -4144;

bool Matches(const Text& shown, const Text& what, bool whole) {
    if (whole) return SameName(shown, what);
    const auto same = [](WCHAR a, WCHAR b) { return SameName(TextView(&a, 1), TextView(&b, 1)); };
    return std::search(shown.begin(), shown.end(), what.begin(), what.end(), same) != shown.end();
}

// Row by row from behind the cell `after`, and from the start again; the null object when nothing matches.
void ReturnNextMatch(Call& call, std::pair<LONG, LONG> after) {
    const auto& search = Application(call).search;
    const RangeNode& range = Self(call);
    const auto match = [&](const auto& entry) {
        const auto [row, column] = entry.first;
        return range.First().Contains(row, column) && !entry.second.IsEmpty() &&
               Matches(ShownText(Sheet(call).Value(row, column)), search.what, search.whole);
    };
    const auto& cells = Sheet(call).cells;
    const auto start = cells.upper_bound(after);
    auto found = std::find_if(start, cells.end(), match);
    if (found == cells.end()) {
        found = std::find_if(cells.begin(), start, match);
        if (found == start) return call.ReturnObject(nullptr);
    }
    const auto [row, column] = found->first;
    ReturnRect(call, {row, column, row, column});
}

std::pair<LONG, LONG> StartOfSearch(const Call& call, unsigned index) {
    const Rect& from = call.Has(index) ? RangeOf(call, call.Argument(index)).First() : Self(call).First();
    return {from.row1, from.column1};
}

Text Replaced(Text text, const Text& what, const Text& by, bool whole) {
    if (whole) return text == what ? by : text;
    for (auto at = text.find(what); at != Text::npos; at = text.find(what, at + by.size())) {
        text.replace(at, what.size(), by);
    }
    return text;
}

}  // namespace

void FindText(Call& call) {
    Application(call).search = {call.Words(0), call.Number(3, 2) == lookWhole};
    ReturnNextMatch(call, StartOfSearch(call, 1));
}

void FindNextText(Call& call) {
    ReturnNextMatch(call, StartOfSearch(call, 0));
}

void ReplaceText(Call& call) {
    const Text what = call.Words(0);
    const Text by = call.Words(1);
    const bool whole = call.Number(2, 2) == lookWhole;
    if (what.empty()) return call.Return(false);
    for (const Rect& area : Self(call).areas) CheckWritable(Sheet(call), area);
    for (auto& [place, cell] : Sheet(call).cells) {
        if (!Self(call).First().Contains(place.first, place.second)) continue;
        if (!cell.formula.empty()) {
            cell.formula = Replaced(cell.formula, what, by, whole);
        } else if (cell.value.Type() == VT_BSTR) {
            cell.value = Variant(Replaced(cell.value.AsText(), what, by, whole));
        }
    }
    call.Return(true);
}

void SpecialCells(Call& call) {
    const LONG kind = call.Number(0);
    SheetNode& sheet = Sheet(call);
    if (kind == kindLastCell) {
        const Rect used = sheet.Used();
        return ReturnRect(call, {used.row2, used.column2, used.row2, used.column2});
    }
    const auto fits = [kind](const Cell& cell) {
        switch (kind) {
            case kindConstants:
                return cell.formula.empty() && !cell.IsEmpty();
            case kindFormulas:
                return !cell.formula.empty();
            case kindComments:
                return cell.comment != nullptr;
            case kindBlanks:
                return cell.IsEmpty();
            default:
                throw Refusal::Exception(TEXT("Unable to get the SpecialCells property of the Range class"));
        }
    };
    std::vector<Rect> areas;
    for (const auto& [place, cell] : sheet.cells) {
        const auto [row, column] = place;
        if (Self(call).First().Contains(row, column) && fits(cell))
            areas.push_back({row, column, row, column});
    }
    if (areas.empty()) throw Refusal::Exception(TEXT("No cells were found."));
    call.ReturnObject(MakeRangeNode(sheet, std::move(areas)));
}

// The secant method on the changing cell, up to Excel's hundred steps.
void GoalSeek(Call& call) {
    const double goal = Variant(call.Argument(0)).AsNumber();
    RangeNode& changing = RangeOf(call, call.Argument(1));
    CheckWritable(changing.sheet, changing.First());
    Cell& input = changing.sheet.At(changing.First().row1, changing.First().column1);
    if (FirstCell(call).formula.empty() || !input.formula.empty()) {
        throw Refusal::Exception(TEXT("Reference isn't valid."));
    }
    const auto miss = [&](double value) {
        input.value = Variant(value);
        return Sheet(call).Value(Self(call).First().row1, Self(call).First().column1).AsNumber() - goal;
    };
    const Variant before = input.value;
    double last = before.Type() == VT_EMPTY ? 0 : before.AsNumber();
    double next = last + 1;
    double lastMiss = miss(last);
    for (int step = 0; step < 100; ++step) {
        const double nextMiss = miss(next);
        if (std::abs(nextMiss) < 1e-9) return call.Return(true);
        if (nextMiss == lastMiss) break;
        const double slope = (nextMiss - lastMiss) / (next - last);
        last = std::exchange(next, next - nextMiss / slope);
        lastMiss = nextMiss;
    }
    input.value = before;
    call.Return(false);
}

}  // namespace excelhost::automation::ranges
