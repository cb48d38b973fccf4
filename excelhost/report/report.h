// A session as a page to look at: one file of HTML that needs nothing else, with the sheets, each call on a time line,
// and the account with a mark at each value that leaked, was freed twice or was altered while lent.
//
// The page stands in report/page/; the journal of the session is written behind it as things happen. A program that an
// add-in ends leaves a page that can be opened, up to the call that it ended in.
#pragma once

#include "excelhost/host.h"
#include "excelhost/journal.h"
#include "excelhost/machine/lastfile.h"
#include "excelhost/report/reportedsheet.h"

#include <filesystem>
#include <fstream>
#include <span>
#include <string_view>
#include <vector>

namespace excelhost {

class Report {
  public:
    // Begins the file, and the journal of this process. InputError when it can't be written.
    Report(std::filesystem::path file, std::span<const std::filesystem::path> addIns);
    ~Report();
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;

    // What is to be calculated. A page has room for 0.45 MB of cells; rows beyond are told by their number.
    void ShowSheets(std::span<const ReportedSheet> sheets);
    // What came of it, in the same cells.
    void ShowValues(std::span<const ReportedSheet> sheets);
    // The account and the findings: the end of the page. `ended` tells why the session has ended before its time, if
    // it has. InputError when the file couldn't be written.
    void Close(const Host& host, std::string_view ended = {});

  private:
    std::filesystem::path path_;
    std::ofstream file_;
    Journal journal_;
    LastFile last_;
    std::vector<std::size_t> rows_;  // of each sheet, that are shown
};

}  // namespace excelhost
