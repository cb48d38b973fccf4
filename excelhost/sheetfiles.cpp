#include "excelhost/sheetfiles.h"

#include "excelhost/characters.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace excelhost {
namespace {

constexpr std::size_t kMostShownFaults = 100;

}  // namespace

std::string ReadInput(const std::string& name) {
    const std::filesystem::path path = PathFrom(name);
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) throw InputError(Excerpt(name) + ": is a folder");
    std::ifstream file(path, std::ios::binary);
    if (!file && !std::filesystem::exists(path, error) && !error) {
        throw InputError(Excerpt(name) + ": there is no such file");
    }
    if (!file) throw InputError(Excerpt(name) + ": can't be opened, though it is there");
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (file.bad()) throw InputError(Excerpt(name) + ": can't be read");
    return text;
}

namespace {

void PrintLines(const std::string& file, std::span<const CellFault> faults, std::ostream& err) {
    for (const CellFault& fault : faults.first(std::min(faults.size(), kMostShownFaults))) {
        err << Excerpt(file) << ": row " << fault.Row() << ", column " << fault.Column() << " ("
            << CellName(static_cast<RW>(fault.Row() - 1), static_cast<COL>(fault.Column() - 1))
            << "): " << fault.what() << '\n';
    }
    if (faults.size() > kMostShownFaults) {
        err << Excerpt(file) << ": " << faults.size() - kMostShownFaults << " more cells have faults\n";
    }
}

}  // namespace

std::filesystem::path PathFrom(std::string_view utf8) {
    return {std::u8string(utf8.begin(), utf8.end())};
}

SheetFiles::SheetFiles(std::span<const std::string> operands, std::ostream& err) {
    std::vector<Text> names;
    for (const std::string& operand : operands) {
        const std::size_t equals = operand.find('=');
        std::error_code error;
        const bool named =
            equals != std::string::npos && equals > 0 && !std::filesystem::exists(PathFrom(operand), error);
        Entry entry{named ? operand.substr(0, equals) : Utf8From(PathFrom(operand).stem()),
                    named ? operand.substr(equals + 1) : operand};
        const Text name = Wide(entry.name);
        if (std::any_of(names.begin(), names.end(),
                        [&](const Text& other) { return SameName(other, name); })) {
            throw InputError("two sheets have the name '" + Excerpt(name) + "'; Name=FILE.csv gives another");
        }
        names.push_back(name);
        entries_.push_back(std::move(entry));
    }
    for (const Entry& entry : entries_) {
        const std::string csv = ReadInput(entry.file);
        try {
            sheets_.emplace_back(csv, names);
        } catch (const SheetFaults& faults) {
            PrintLines(entry.file, faults.All(), err);
            good_ = false;
        }
    }
}

std::vector<NamedSheet> SheetFiles::Named() {
    std::vector<NamedSheet> named;
    for (std::size_t i = 0; i < sheets_.size(); ++i) {
        const std::string book = Utf8From(PathFrom(entries_[i].file).filename());
        named.push_back({Wide("[" + book + "]" + entries_[i].name), &sheets_[i]});
    }
    return named;
}

void SheetFiles::Calculate(Host& host, std::size_t threads, const CalculationProgress& progress) {
    const std::vector<NamedSheet> named = Named();
    try {
        faults_ = CalculateSheets(named, host, 1, threads, progress);
    } catch (const SheetFaults& circle) {
        faults_.resize(sheets_.size());
        faults_[circle.Sheet() - 1] = circle.All();
        good_ = false;
    }
}

bool SheetFiles::PrintFaults(std::ostream& err) const {
    bool none = true;
    for (std::size_t i = 0; i < faults_.size(); ++i) {
        PrintLines(entries_[i].file, faults_[i], err);
        none = none && faults_[i].empty();
    }
    return none;
}

std::vector<ReportedSheet> SheetFiles::Reported() const {
    std::vector<ReportedSheet> reported;
    for (std::size_t i = 0; i < sheets_.size(); ++i) {
        CsvTable fields;
        try {
            fields = ParseCsv(ReadInput(entries_[i].file));
        } catch (const std::exception&) {
        }
        reported.push_back({entries_[i].name, std::move(fields), [&sheet = sheets_[i]](Place place) {
                                return CellText(sheet.Values().At(place));
                            }});
    }
    return reported;
}

void SheetFiles::Print(std::ostream& out) const {
    for (std::size_t i = 0; i < sheets_.size(); ++i) {
        if (sheets_.size() > 1) out << (i > 0 ? "\n# " : "# ") << entries_[i].name << '\n';
        out << sheets_[i].Csv();
    }
}

}  // namespace excelhost
