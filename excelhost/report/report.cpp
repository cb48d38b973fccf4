#include "excelhost/report/report.h"

#include "excelhost/characters.h"
#include "excelhost/lastwords.h"
#include "excelhost/report/page.h"
#include "excelhost/sheetfiles.h"

#include <map>

namespace excelhost {
namespace {

constexpr std::size_t kFieldsLimit = 450'000;
constexpr std::size_t kValuesLimit = 350'000;

std::ofstream Create(const std::filesystem::path& path) {
    std::ofstream file(path, std::ios::binary | std::ios::trunc);
    file << kPageHead;
    if (!file.flush()) throw InputError("the report " + Utf8From(path) + " can't be written");
    return file;
}

bool IsFormula(const std::string& field) {
    return field.size() > 1 && field.front() == '=';
}

std::string SheetLine(std::size_t index, const ReportedSheet& sheet) {
    std::string line = "7," + std::to_string(index) + ",";
    AppendJson(line, sheet.name);
    const std::size_t columns = sheet.fields.empty() ? 0 : sheet.fields.front().size();
    return line + "," + std::to_string(sheet.fields.size()) + "," + std::to_string(columns);
}

std::string JsonFrom(const Account& account) {
    std::string json;
    for (const auto& [name, count] : NamedCounts(account)) {
        AppendJson(json += json.empty() ? '{' : ',', name);
        json += ":" + std::to_string(count);
    }
    return json + "}";
}

std::string JsonFrom(std::span<const Finding> findings) {
    std::string json = "[";
    for (const Finding& finding : findings) {
        AppendJson(json += json.size() > 1 ? ",{\"text\":" : "{\"text\":", finding.text);
        json += ",\"isFault\":" + std::string(finding.isFault ? "true" : "false");
        json += ",\"count\":" + std::to_string(finding.count);
        if (finding.call) json += ",\"call\":" + std::to_string(*finding.call);
        json += '}';
    }
    return json + "]";
}

}  // namespace

Report::Report(std::filesystem::path file, std::span<const std::filesystem::path> addIns)
    : path_(std::move(file)), file_(Create(path_)), journal_(file_), last_(path_) {
    SetLastFile(&last_);
    std::string line = "5,{\"addIns\":[";
    for (std::size_t i = 0; i < addIns.size(); ++i) {
        if (i > 0) line += ',';
        AppendJson(line, Utf8From(addIns[i].filename()));
    }
    journal_.Write(line + "]}");
}

Report::~Report() {
    SetLastFile(nullptr);
}

void Report::ShowSheets(std::span<const ReportedSheet> sheets) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < sheets.size(); ++i) {
        journal_.Write(SheetLine(i, sheets[i]));
        const CsvTable& fields = sheets[i].fields;
        std::size_t& row = rows_.emplace_back(0);
        for (; row < fields.size() && size < kFieldsLimit; ++row) {
            std::string line = "8," + std::to_string(row);
            for (const std::string& field : fields[row]) AppendJson(line += ',', field);
            size += line.size();
            journal_.Write(line);
        }
    }
}

void Report::ShowValues(std::span<const ReportedSheet> sheets) {
    std::size_t size = 0;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
        journal_.Write(SheetLine(i, sheets[i]));
        for (std::size_t row = 0; row < rows_[i] && size < kValuesLimit; ++row) {
            std::string line = "9," + std::to_string(row);
            const std::size_t empty = line.size();
            const std::vector<std::string>& fields = sheets[i].fields[row];
            for (std::size_t column = 0; column < fields.size(); ++column) {
                if (!IsFormula(fields[column])) continue;
                line += "," + std::to_string(column) + ",";
                AppendJson(line, sheets[i].shown({static_cast<RW>(row), static_cast<COL>(column)}));
            }
            size += line.size();
            if (line.size() > empty) journal_.Write(line);
        }
    }
}

void Report::Close(const Host& host, std::string_view ended) {
    std::vector<std::size_t> leaks;
    for (const Leak& leak : host.Leaks()) {
        if (leak.call) leaks.push_back(*leak.call);
    }
    journal_.Mark(kLeaked, std::move(leaks));
    std::string line = "10,{\"account\":" + JsonFrom(host.GetAccount());
    line += ",\"findings\":" + JsonFrom(host.Findings()) + ",\"functions\":" + journal_.Functions();
    line += ",\"calls\":" + std::to_string(journal_.Count());
    if (!ended.empty()) AppendJson(line += ",\"ended\":", ended);
    journal_.Write(line + "}");
    SetLastFile(nullptr);
    file_ << kPageTail;
    file_.close();
    if (!file_) throw InputError("the report " + Utf8From(path_) + " can't be written");
}

}  // namespace excelhost
