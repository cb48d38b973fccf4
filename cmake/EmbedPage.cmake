# Makes one page of a page and its parts, and a source of it: cmake -DPAGE=FOLDER -DOUTPUT=FILE.cpp -P EmbedPage.cmake.
# The parts, which page.html names as others on its side, are put in their places.
file(READ "${PAGE}/page.html" page)
file(GLOB parts "${PAGE}/*.css" "${PAGE}/*.js")
foreach(part IN LISTS parts)
  cmake_path(GET part FILENAME name)
  file(READ "${part}" content)
  string(REPLACE "<link rel=\"stylesheet\" href=\"${name}\">" "<style>\n${content}</style>" page "${page}")
  string(REPLACE "<script src=\"${name}\"></script>" "<script>\n${content}</script>" page "${page}")
endforeach()
if(page MATCHES "(href|src)=")
  message(FATAL_ERROR "the page needs a file beside it: ${CMAKE_MATCH_0}")
endif()

set(journal "<script type=\"text/plain\" id=\"journal\">\n")
string(FIND "${page}" "${journal}" end REVERSE)
string(LENGTH "${journal}" length)
math(EXPR end "${end} + ${length}")
string(SUBSTRING "${page}" 0 ${end} head)
string(SUBSTRING "${page}" ${end} -1 tail)
file(WRITE "${OUTPUT}" "#include \"excelhost/report/page.h\"

namespace excelhost {

const std::string_view kPageHead = R\"page(${head})page\";
const std::string_view kPageTail = R\"page(${tail})page\";

}  // namespace excelhost
")
