// Files, folders, settings and mutexes: what gives a fallback and what raises.

#include "errors/vex.h"
#include "platform/platform.h"
#include "text/text.h"

#include <cstdio>
#include <string>

namespace {

void Print(const char* topic, const std::string& text) {
    std::printf("%-18s %s\n", topic, text.c_str());
}

std::string Narrow(const CStringW& text) {
    return Utf8FromCStringW(text);
}

void Files(const CStringW& folder) {
    const CStringW path = folder + TEXT("\\notes.txt");
    {
        File file(path, TEXT("wb"));
        const std::string text = "first\nsecond\n";
        file.write(text.data(), static_cast<std::uint32_t>(text.size()));
    }
    File file(path, TEXT("rb"));
    Print("lines", std::to_string(file.get_lines().size()));
    Print("CRC-64", StdStringFormat("%016I64X", file.crc64()));
}

void Failures(const CStringW& folder) {
    const CStringW absent = folder + TEXT("\\absent.txt");
    Print("size of nothing", std::to_string(FileSize64(absent)));
    try {
        const File file(absent, TEXT("rb"));
    } catch (const VexErrorOpeningFile& raised) {
        const CStringW path = raised.args[0];
        Print("raised", Narrow(raised.key) + " for ..." + Narrow(path.Mid(folder.GetLength())));
    }
}

void Settings() {
    const WCHAR* const where = TEXT("Software\\Layers example");
    {
        RegistryKey key(0, HKEY_CURRENT_USER, where, KEY_READ | KEY_WRITE, nullptr);
        key.ValueWrite(TEXT("Rounds"), 3);
        Print("Rounds", std::to_string(key.ValueReadInt(TEXT("Rounds"))));
        // A number is never read as a text.
        Print("as a text", "\"" + Narrow(key.ValueReadStringW(TEXT("Rounds"))) + "\"");
        try {
            CStringW text;
            key.ValueRead(TEXT("Rounds"), text);
        } catch (const VexRegValueReadFailed& raised) {
            Print("raised",
                  Narrow(raised.key) + " for " + Narrow(raised.args[0]) + " in " + Narrow(raised.args[1]));
        }
    }
    RegDeleteTreeW(HKEY_CURRENT_USER, where);
}

void Presence() {
    const CStringW name = TEXT("Layers example is running");
    {
        const Mutex marker(name, true, 0, nullptr);
        Print("mutex", Narrow(marker.name()));
        Print("seen by others", Mutex::Exists(name, true, 0) ? "yes" : "no");
    }
    Print("afterwards", Mutex::Exists(name, true, 0) ? "yes" : "no");
}

}  // namespace

int main() {
    const CStringW folder = TempDirectory() + TEXT("layers-example");
    if (!CreateDirectoryTree(folder)) return 1;
    Files(folder);
    Failures(folder);
    Print("removed", RemoveDirectoryTree(folder) ? "all of it" : "not all of it");
    Settings();
    Presence();
}
