// The least that can stand in Excel's place: it notes each entry as it came, and answers as it is told to.
#pragma once

#include "excelvalues/callexcel.h"

#include <functional>
#include <vector>

// From its making to its end Excel12EntryPoint leads to it.
class RecordingHost {
  public:
    struct Entry {
        int function;
        int count;
        bool hasOperandArray;
        std::vector<const XLOPER12*> operands;
        const XLOPER12* result;
        DWORD resultTypeOnEntry;
        int resultCodeOnEntry;
    };

    RecordingHost() noexcept : previous_(Excel12EntryPoint) {
        current_ = this;
        Excel12EntryPoint = &CallBack;
    }
    ~RecordingHost() {
        current_ = nullptr;
        Excel12EntryPoint = previous_;
    }
    RecordingHost(const RecordingHost&) = delete;
    RecordingHost& operator=(const RecordingHost&) = delete;

    // Fills the result of, and gives the return code for, any function but xlFree and the two switches of
    // messages, which succeed.
    std::function<int(const Entry&, XLOPER12* result)> answer = [](const Entry&, XLOPER12*) { return 0; };

    std::vector<Entry> entries;

    [[nodiscard]] std::vector<int> Functions() const {
        std::vector<int> functions;
        for (const Entry& entry : entries) functions.push_back(entry.function);
        return functions;
    }

  private:
    static int PASCAL CallBack(int function, int count, LPXLOPER12* operands, LPXLOPER12 result) {
        Entry entry{function, count, operands != nullptr, {}, result, 0, 0};
        entry.operands.assign(operands, operands + count);
        if (result != nullptr) {
            entry.resultTypeOnEntry = result->xltype;
            entry.resultCodeOnEntry = result->val.returnCode;
        }
        current_->entries.push_back(entry);
        const bool plain = function == xlFree || function == xlEnableXLMsgs || function == xlDisableXLMsgs;
        return plain ? xlretSuccess : current_->answer(entry, result);
    }

    static inline RecordingHost* current_ = nullptr;
    EXCEL12PROC previous_;
};
