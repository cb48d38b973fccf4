#include "excelhost/describe/describe.h"

#include "excelhost/program.h"

#include "errors/vex.h"
#include "platform/platform.h"
#include "text/text.h"

#include <algorithm>
#include <memory>
#include <span>
#include <stdexcept>
#include <vector>

namespace excelhost {
namespace {

// Collects the page's lines.
class Page {
  public:
    void Section(const char* name) { text_ += (text_.empty() ? "" : "\n") + std::string(name) + '\n'; }

    void Line(std::string label, CStringW value) {
        constexpr std::size_t labelWidth = 22;
        label.resize(std::max(label.size() + 1, labelWidth), ' ');
        text_ += "  " + label + (value.TrimRight().IsEmpty() ? "unknown" : Utf8FromCStringW(value)) + '\n';
    }

    [[nodiscard]] std::string Text() && { return std::move(text_); }

  private:
    std::string text_;
};

CStringW YesOrNo(bool fact) {
    return fact ? TEXT("yes") : TEXT("no");
}

CStringW Grouped(std::uint64_t number, const WCHAR* unit) {
    return CStringWFromInt64Grouped(static_cast<std::int64_t>(number)) + TEXT(' ') + unit;
}

CStringW Count(std::uint32_t number) {
    return number == 0 ? CStringW() : CStringWFormat(TEXT("%u"), number);
}

CStringW Features() {
    std::vector<CStringA> names;
    if (CpuHasSse2()) names.emplace_back("SSE2");
    if (CpuHasAvx()) names.emplace_back("AVX");
    if (CpuHasAvx2()) names.emplace_back("AVX2");
    if (CpuHasFma()) names.emplace_back("FMA");
    return CStringWFromVectorCStringA(names);
}

void AddMachine(Page& page) {
    constexpr std::uint64_t mebibyte = 1 << 20;
    const MEMORYSTATUSEX memory = MemoryStatus();
    const ProcessorCount found = ProcessorCounts(false), used = ProcessorCounts(true);
    const std::uint32_t serial = SystemVolumeSerial();
    page.Section("Machine");
    page.Line("operating system", OsName());
    page.Line("build", OsBuildString());
    page.Line("version number", Count(OsVersionNumber()));
    page.Line("64-bit system", YesOrNo(Is64BitWindows()));
    page.Line("processor", CStringW(CpuVendor().c_str()));
    page.Line("processor features", Features());
    page.Line("cores", Count(found.cores));
    page.Line("logical processors", Count(found.logicalProcessors));
    page.Line("processor override", found == used ? CStringW("none") : Count(used.cores));
    page.Line("memory", Grouped(memory.ullTotalPhys / mebibyte, TEXT("MiB")));
    page.Line("free memory", Grouped(memory.ullAvailPhys / mebibyte, TEXT("MiB")));
    page.Line("memory page", Grouped(SystemInfo().dwPageSize, TEXT("bytes")));
    page.Line("volume serial", serial == 0 ? CStringW() : CStringWFormat(TEXT("%08X"), serial));
    page.Line("computer", ComputerName(false, false));
    page.Line("user", UserName(false));
    page.Line("Excel is running", YesOrNo(IsExcelRunning()));
    page.Line("tablet mode", YesOrNo(IsTabletMode()));
}

CStringW OwnSystemDirectory() {
    try {
        return QuillmarSystemDirectory();
    } catch (const VexRegKeyError&) {
        return TEXT("not set");
    }
}

void AddFolders(Page& page) {
    page.Section("Folders");
    page.Line("system", SystemDirectory());
    page.Line("temporary", TempDirectory());
    page.Line("data of all users", CommonAppDataDirectory());
    page.Line("data of the user", AppDataDirectory());
    page.Line("Tallyhost", TallyhostProgramDirectory());
    page.Line("Quillmar system", OwnSystemDirectory());
}

void AddModule(Page& page, const CStringW& module) {
    File file(module.GetString(), TEXT("rb"));
    const FileVersionInfo version(module);
    page.Section("Module");
    page.Line("file", module);
    page.Line("size", Grouped(static_cast<std::uint64_t>(file.size()), TEXT("bytes")));
    page.Line("CRC-64", CStringWFormat(TEXT("%016I64X"), file.crc64()));
    static constexpr const char* labels[] = {"company",   "description",   "file version", "internal name",
                                             "copyright", "original name", "product",      "product version"};
    for (std::uint32_t index = 0; index < std::size(labels); ++index) {
        page.Line(labels[index], version.GetString(index));
    }
    const bool hasVersion = version.data != nullptr;
    page.Line("language", hasVersion ? CStringWFormat(TEXT("%04X"), version.language) : CStringW());
    page.Line("code page", hasVersion ? CStringWFormat(TEXT("%u "), version.codePage) + version.CodePageName()
                                      : CStringW());
    CStringW drive, folder, name, extension;
    SplitPath(module.GetString(), drive, folder, name, extension);
    const std::int32_t loads = ModuleUsageCount(name + extension);
    page.Line("loaded", loads < 0 ? CStringW("no") : CStringWFormat(TEXT("%d times"), loads));
}

}  // namespace

std::string Description(const CStringW& module) {
    Page page;
    AddMachine(page);
    AddFolders(page);
    AddModule(page, module);
    return std::move(page).Text();
}

Command DescribeCommand() {
    const auto file = std::make_shared<std::string>();
    const auto run = [file](std::span<const std::string> operands, Surroundings& around) -> int {
        if (!operands.empty()) throw UsageError("describe takes '--addin FILE' alone");
        const auto beside = (around.folder / "kestrolumen.xll").u8string();
        if (file->empty()) file->assign(beside.begin(), beside.end());
        try {
            around.out << Description(CStringWFromUtf8(file->data(), file->size()));
            return kDone;
        } catch (const VexDiskError&) {
            throw std::runtime_error(*file + ": can't be read");
        }
    };
    return {
        "describe",
        "prints what kestrolumen.xll knows of this machine, its folders and its own file",
        {"[--addin FILE]"},
        "Prints what the add-in knows of this machine, its folders and the add-in's own file.\n",
        {TextOption("--addin", "FILE", "the file; kestrolumen.xll beside this program if left out", *file)},
        run};
}

}  // namespace excelhost
