#include "excelhost/state.h"

namespace excelhost {

Value Dereference(const HostState& state, const Value& value) {
    IDSHEET id = 0;
    Area area;
    if (const Area* onSheet = value.If<Area>()) {
        area = *onSheet;
    } else if (const Reference* reference = value.If<Reference>()) {
        if (reference->areas.size() != 1) return ErrorValue{xlerrValue};
        id = reference->sheet;
        area = reference->areas.front();
    } else {
        return value;
    }
    CellReader reader;
    {
        const std::lock_guard lock(state.mutex);
        const OpenSheet* sheet = state.sheets.Find(id);
        if (sheet == nullptr || !sheet->reader) return ErrorValue{xlerrRef};
        reader = sheet->reader;
    }
    return reader(area);
}

}  // namespace excelhost
