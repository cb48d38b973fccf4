// excelhost inspect: what an add-in registers, exports, asks of Excel and leaves behind.
#include "excelhost/commands/markup.h"
#include "excelhost/commands/play.h"
#include "excelhost/program.h"
#include "excelhost/served/table.h"

#include <algorithm>
#include <array>
#include <map>
#include <memory>

namespace excelhost {
namespace {

constexpr const char* kDescription =
    R"(Opens an add-in, closes it, and prints what it has registered (functions and commands with their arguments, types and
help), what it exports of what Excel looks for, how often it called each function of Excel, and its account.

The keys of --json, which stay as they are:
  addIns[]     file, exports[]
  functions[]  name, procedure, module, typeText, category, help, helpTopic, hidden, threadSafe, forMacroSheets,
               recalculatesAlways, clusterSafe, asynchronous, result, arguments[] (name, type, words, help)
  commands[]   name, procedure, module, shortcut, help
  calls[]      function, count, failed
  account      lent, lentAltered, results, failures, returned, allocated, freed, leaked, freedTwice, foreign, flagged,
               unfreeable
  findings[]   text, count, isFault
)";

constexpr auto kExports = std::to_array<const char*>(
    {"xlAutoOpen", "xlAutoClose", "xlAutoAdd", "xlAutoRemove", "xlAutoFree", "xlAutoFree12", "xlAutoRegister",
     "xlAutoRegister12", "xlAddInManagerInfo", "xlAddInManagerInfo12", "xlEventRegister"});

struct Calls {
    std::size_t count = 0;
    std::size_t failed = 0;
};

struct AddInFacts {
    std::string file;
    std::vector<std::string> exports;
};

struct Facts {
    std::vector<AddInFacts> addIns;
    std::vector<Registration> functions;
    std::vector<Registration> commands;
    std::map<int, Calls> calls;  // by function number
    Account account;
    std::vector<Finding> findings;
};

void LookWhileOpen(const Host& host, Facts& facts) {
    for (const Module& module : host.Modules()) {
        AddInFacts& addIn = facts.addIns.emplace_back(AddInFacts{Utf8(module.fileName), {}});
        for (const char* name : kExports) {
            if (module.exports(name) != nullptr) addIn.exports.emplace_back(name);
        }
    }
    for (Registration& registration : host.Registrations()) {
        const bool isCommand = registration.kind == Registration::Kind::Command;
        (isCommand ? facts.commands : facts.functions).push_back(std::move(registration));
    }
}

// The names of the arguments, of which an add-in may give fewer than the function has.
std::vector<std::string> ArgumentNames(const Registration& function) {
    std::vector<std::string> names(function.Arity());
    TextView rest = function.argumentText;
    for (std::size_t i = 0; i < names.size() && !rest.empty(); ++i) {
        const std::size_t comma = std::min(rest.find(WCHAR{','}), rest.size());
        std::string name = Utf8(rest.substr(0, comma));
        name.erase(0, name.find_first_not_of(' '));
        name.erase(name.find_last_not_of(' ') + 1);
        names[i] = std::move(name);
        rest.remove_prefix(std::min(comma + 1, rest.size()));
    }
    return names;
}

std::string HelpAt(const Registration& function, std::size_t argument) {
    return argument < function.argumentHelp.size() ? Utf8(function.argumentHelp[argument]) : std::string();
}

std::string ResultInWords(const TypeText& type) {
    if (type.asynchronous) return "later, through a handle (X)";
    if (type.inPlace != 0) return "argument " + std::to_string(type.inPlace) + ", changed in place";
    return InWords(type.result);
}

// -- For people.

void Line(std::string& page, std::size_t indent, std::string label, const std::string& text) {
    constexpr std::size_t column = 24;
    if (text.empty()) return;
    label.insert(0, indent, ' ');
    label.resize(std::max(label.size() + 1, column), ' ');
    page += label + Excerpt(text, 1000) + "\n";
}

std::string MarksOf(const Registration& function) {
    const std::pair<bool, const char*> marks[] = {
        {function.kind == Registration::Kind::HiddenFunction, "hidden from the function wizard"},
        {function.type.threadSafe, "thread-safe ($)"},
        {function.type.forMacroSheets, "for macro sheets (#)"},
        {function.type.recalculatesAlways, "recalculates always (!)"},
        {function.type.clusterSafe, "cluster-safe (&)"},
    };
    std::string text;
    for (const auto& [holds, name] : marks) {
        if (holds) text += (text.empty() ? "" : ", ") + std::string(name);
    }
    return text;
}

void AddFunction(std::string& page, const Registration& function) {
    const std::vector<std::string> names = ArgumentNames(function);
    page += "  " + Excerpt(function.functionText) + "(" + Excerpt(function.argumentText, 1000) + ")\n";
    Line(page, 4, "help", Utf8(function.functionHelp));
    Line(page, 4, "category", Utf8(function.category));
    Line(page, 4, "help topic", Utf8(function.helpTopic));
    Line(page, 4, "type text", Utf8(function.typeText) + " of " + Utf8(function.procedure));
    Line(page, 4, "marks", MarksOf(function));
    Line(page, 4, "result", ResultInWords(function.type));
    for (std::size_t i = 0; i < names.size(); ++i) {
        const std::string help = HelpAt(function, i);
        Line(page, 4, names[i].empty() ? "argument " + std::to_string(i + 1) : Excerpt(names[i]),
             InWords(function.type.arguments[i]) + (help.empty() ? "" : ": " + help));
    }
}

std::string Page(const Facts& facts) {
    std::string page;
    for (const AddInFacts& addIn : facts.addIns) {
        page += Excerpt(addIn.file) + "\n";
        std::string exports;
        for (const std::string& name : addIn.exports) exports += (exports.empty() ? "" : " ") + name;
        Line(page, 2, "exports", exports);
    }
    page += "\nFunctions: " + std::to_string(facts.functions.size()) + "\n";
    for (const Registration& function : facts.functions) AddFunction(page, function);
    page += "\nCommands: " + std::to_string(facts.commands.size()) + "\n";
    for (const Registration& command : facts.commands) {
        page += "  " + Excerpt(command.functionText) + "\n";
        Line(page, 4, "help", Utf8(command.functionHelp));
        Line(page, 4, "shortcut", command.shortcut.empty() ? "" : "Ctrl+" + Utf8(command.shortcut));
        Line(page, 4, "procedure", Utf8(command.procedure));
    }
    page += "\nCalls into Excel\n";
    for (const auto& [number, calls] : facts.calls) {
        Line(page, 2, FunctionName(number),
             std::to_string(calls.count) +
                 (calls.failed > 0 ? ", of which failed " + std::to_string(calls.failed) : ""));
    }
    page += "\nAccount\n  " + Describe(facts.account) + "\n";
    for (const Finding& finding : facts.findings) page += "  " + Describe(finding) + "\n";
    return page;
}

// -- For programs.

void AddFunction(JsonWriter& json, const Registration& function) {
    json.Open('{');
    json.Name("name").String(Utf8(function.functionText));
    json.Name("procedure").String(Utf8(function.procedure));
    json.Name("module").String(Utf8(FileNameOf(function.module)));
    json.Name("typeText").String(Utf8(function.typeText));
    json.Name("category").String(Utf8(function.category));
    json.Name("help").String(Utf8(function.functionHelp));
    json.Name("helpTopic").String(Utf8(function.helpTopic));
    json.Name("hidden").Truth(function.kind == Registration::Kind::HiddenFunction);
    json.Name("threadSafe").Truth(function.type.threadSafe);
    json.Name("forMacroSheets").Truth(function.type.forMacroSheets);
    json.Name("recalculatesAlways").Truth(function.type.recalculatesAlways);
    json.Name("clusterSafe").Truth(function.type.clusterSafe);
    json.Name("asynchronous").Truth(function.type.asynchronous);
    json.Name("result").String(ResultInWords(function.type));
    json.Name("arguments").Open('[');
    const std::vector<std::string> names = ArgumentNames(function);
    for (std::size_t i = 0; i < names.size(); ++i) {
        json.Open('{');
        json.Name("name").String(names[i]);
        json.Name("type").String(Describe(function.type.arguments[i]));
        json.Name("words").String(InWords(function.type.arguments[i]));
        json.Name("help").String(HelpAt(function, i));
        json.Close();
    }
    json.Close();
    json.Close();
}

void AddAccount(JsonWriter& json, const Account& account) {
    json.Name("account").Open('{');
    for (const auto& [name, count] : NamedCounts(account)) json.Name(name).Number(count);
    json.Close();
}

std::string Json(const Facts& facts) {
    JsonWriter json;
    const auto list = [&](const char* name, const auto& items, const auto& add) {
        json.Name(name).Open('[');
        for (const auto& item : items) add(item);
        json.Close();
    };
    json.Open('{');
    list("addIns", facts.addIns, [&](const AddInFacts& addIn) {
        json.Open('{');
        json.Name("file").String(addIn.file);
        list("exports", addIn.exports, [&](const std::string& name) { json.String(name); });
        json.Close();
    });
    list("functions", facts.functions, [&](const Registration& function) { AddFunction(json, function); });
    list("commands", facts.commands, [&](const Registration& command) {
        json.Open('{');
        json.Name("name").String(Utf8(command.functionText));
        json.Name("procedure").String(Utf8(command.procedure));
        json.Name("module").String(Utf8(FileNameOf(command.module)));
        json.Name("shortcut").String(Utf8(command.shortcut));
        json.Name("help").String(Utf8(command.functionHelp));
        json.Close();
    });
    list("calls", facts.calls, [&](const auto& entry) {
        json.Open('{');
        json.Name("function").String(FunctionName(entry.first));
        json.Name("count").Number(entry.second.count);
        json.Name("failed").Number(entry.second.failed);
        json.Close();
    });
    AddAccount(json, facts.account);
    list("findings", facts.findings, [&](const Finding& finding) {
        json.Open('{');
        json.Name("text").String(finding.text);
        json.Name("count").Number(finding.count);
        json.Name("isFault").Truth(finding.isFault);
        json.Close();
    });
    json.Close();
    return json.Text();
}

struct InspectOptions {
    SessionOptions session;
    bool json = false;
};

int Inspect(InspectOptions& options, std::span<const std::string> operands, Surroundings& around) {
    if (operands.empty()) throw UsageError("the name of an add-in is missing");
    options.session.addIns.insert(options.session.addIns.begin(), operands.begin(), operands.end());
    Facts facts;
    const Act act{"the add-in is looked at", [&](Host& host) { LookWhileOpen(host, facts); },
                  [&](Host& host) {
                      facts.account = host.GetAccount();
                      facts.findings = host.Findings();
                      around.out << (options.json ? Json(facts) : Page(facts));
                      return kDone;
                  },
                  nullptr,
                  [&](const Entry& entry) {
                      Calls& calls = facts.calls[entry.function];
                      ++calls.count;
                      if (entry.returnCode != xlretSuccess) ++calls.failed;
                  }};
    return Play(options.session, act, around);
}

}  // namespace

Command InspectCommand() {
    const auto options = std::make_shared<InspectOptions>();
    std::vector<Option> all = {SwitchOption("--json", "prints JSON, in UTF-8", options->json)};
    return {"inspect",
            "prints what an add-in registers, exports and asks of Excel",
            {"ADDIN.xll... [options]"},
            kDescription,
            WithSessionOptions(std::move(all), options->session),
            [options](std::span<const std::string> operands, Surroundings& around) {
                return Inspect(*options, operands, around);
            }};
}

}  // namespace excelhost
