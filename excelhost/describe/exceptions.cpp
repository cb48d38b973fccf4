#include "excelhost/describe/exceptions.h"

#include "errors/vex.h"
#include "text/text.h"

#include <comdef.h>

namespace excelhost {

std::string TellOwnException() try { throw; } catch (const VexException& record) {
    std::string told = Utf8FromCStringW(record.key) + ", code " + std::to_string(record.code) + ", in " +
                       Utf8FromCStringW(record.function);
    const char* separator = ": '";
    for (const CStringW& argument : record.args) {
        told += separator + Utf8FromCStringW(argument) + "'";
        separator = ", '";
    }
    return told;
} catch (const _com_error& error) {
    const CStringW code = CStringWFormat(TEXT("_com_error %08X"), static_cast<unsigned>(error.Error()));
    return Utf8FromCStringW(code);
} catch (...) {
    return {};
}

}  // namespace excelhost
