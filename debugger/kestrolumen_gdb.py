"""How gdb shows the library's values and strings.

    (gdb) source debugger/kestrolumen_gdb.py
    (gdb) print *argument
    $1 = array 2x2 of cells = {[0,0] = number 1, [0,1] = number 2, [1,0] = number 3, [1,1] = error #N/A}

Shown are XLOPER12 and XXloper by their type, CStringW and CStringA as text, VexException with its class, code and
arguments, VARIANT by its type. Text of the ANSI code page is shown as code page 1252.
"""
import gdb
import gdb.printing

ERRORS = {0: "#NULL!", 7: "#DIV/0!", 15: "#VALUE!", 23: "#REF!", 29: "#NAME?", 36: "#NUM!", 42: "#N/A",
          43: "#GETTING_DATA", 45: "#SPILL!", 46: "#CONNECT!", 47: "#BLOCKED!", 48: "#UNKNOWN!", 49: "#FIELD!",
          50: "#CALC!"}
MISSING = {32: "flow", 128: "missing", 256: "empty"}
TYPE_MASK = 0x0FFF
FREED_BY = {0x1000: "freed by Excel", 0x4000: "freed by the add-in"}
SHOWN_UNITS = 200
SHOWN_CELLS = 64


def read_text(address, units, unit_size):
    if units <= 0 or address == 0:
        return '""'
    shown = min(units, SHOWN_UNITS)
    data = bytes(gdb.selected_inferior().read_memory(address, shown * unit_size))
    text = data.decode("utf-16-le" if unit_size == 2 else "cp1252", "replace")
    return '"' + text + ('"...' if shown < units else '"')


class StringPrinter:
    """CStringT: one pointer to units; in front of them the head with the length."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        text = self.value["text_"]
        unit = self.value.type.strip_typedefs().template_argument(0).sizeof
        head = gdb.lookup_type("atlstr::BufferHead")
        length = int((text.cast(head.pointer()) - 1).dereference()["length"])
        return read_text(int(text), length, unit)


class ValuePrinter:
    """XLOPER12 and XXloper: the type, then what it holds."""

    def __init__(self, value):
        self.value = value
        self.kind = int(value["xltype"]) & TYPE_MASK
        self.content = value["val"]

    def flags(self):
        word = int(self.value["xltype"])
        return "".join(f" ({text})" for bit, text in FREED_BY.items() if word & bit)

    def string(self):
        address = int(self.content["str"])
        if address == 0:
            return "text, null"
        count = int.from_bytes(bytes(gdb.selected_inferior().read_memory(address, 2)), "little")
        return "text " + read_text(address + 2, count, 2)

    def error(self):
        number, refused = int(self.content["err"]), int(self.content["failure"]["returnCode"])
        name = ERRORS.get(number, f"number {number}")
        return f"error {name}" + (f", Excel refused the call with code {refused}" if refused else "")

    def area(self, ref):
        return f"R{int(ref['rwFirst'])}C{int(ref['colFirst'])}:R{int(ref['rwLast'])}C{int(ref['colLast'])}"

    def reference(self):
        mref = self.content["mref"]
        areas = 0 if int(mref["lpmref"]) == 0 else int(mref["lpmref"]["count"])
        return f"reference to {areas} area(s) of sheet {int(mref['idSheet'])}, rows and columns from 0"

    def to_string(self):
        kinds = {
            1: lambda: f"number {float(self.content['num']):.17g}",
            2: self.string,
            4: lambda: "boolean " + ("TRUE" if int(self.content["xbool"]) else "FALSE"),
            8: self.reference,
            16: self.error,
            64: lambda: f"array {int(self.content['array']['rows'])}x{int(self.content['array']['columns'])} of cells",
            1024: lambda: f"reference {self.area(self.content['sref']['ref'])} of the current sheet, from 0",
            2048: lambda: f"integer {int(self.content['w'])}",
            2050: lambda: f"{int(self.content['bigdata']['cbData'])} bytes",
        }
        text = kinds[self.kind]() if self.kind in kinds else MISSING.get(self.kind, f"unknown type {self.kind}")
        return text + self.flags()

    def children(self):
        if self.kind == 8 and int(self.content["mref"]["lpmref"]) != 0:
            block = self.content["mref"]["lpmref"].dereference()
            first = block["reflref"][0].address
            for index in range(min(int(block["count"]), SHOWN_CELLS)):
                yield f"[{index}]", self.area((first + index).dereference())
        if self.kind == 64 and int(self.content["array"]["lparray"]) != 0:
            array = self.content["array"]
            columns = int(array["columns"]) & 0x7FFF
            for index in range(min(int(array["rows"]) * columns, SHOWN_CELLS)):
                yield f"[{index // columns},{index % columns}]", (array["lparray"] + index).dereference()


class ExceptionPrinter:
    """The family's record: which class was raised, by which operation, with which code and arguments."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "exception"

    def children(self):
        for name in ("key", "function", "code", "args"):
            yield name, self.value[name]


class VariantPrinter:
    NAMES = {0: "VT_EMPTY", 1: "VT_NULL", 9: "VT_DISPATCH", 12: "VT_VARIANT", 13: "VT_UNKNOWN"}
    FIELDS = {2: "iVal", 3: "lVal", 4: "fltVal", 5: "dblVal", 7: "date", 16: "cVal", 17: "bVal", 18: "uiVal",
              19: "ulVal", 20: "llVal", 21: "ullVal", 22: "intVal", 23: "uintVal"}

    def __init__(self, value):
        self.value = value

    def to_string(self):
        vt = int(self.value["vt"])
        if vt == 8:
            address = int(self.value["bstrVal"])
            if address == 0:
                return 'VT_BSTR ""'
            count = int.from_bytes(bytes(gdb.selected_inferior().read_memory(address - 4, 4)), "little")
            return "VT_BSTR " + read_text(address, count // 2, 2)
        if vt == 10:
            return f"VT_ERROR {int(self.value['scode']) & 0xFFFFFFFF:08X}"
        if vt == 11:
            return "VT_BOOL " + ("TRUE" if int(self.value["boolVal"]) else "FALSE")
        if vt in self.FIELDS:
            return f"{self.value[self.FIELDS[vt]]} (VT {vt})"
        return self.NAMES.get(vt, f"VT 0x{vt:04X}")


def printers():
    collection = gdb.printing.RegexpCollectionPrettyPrinter("kestrolumen")
    collection.add_printer("values", "^(XLOPER12|XXloper)$", ValuePrinter)
    collection.add_printer("strings", "^CStringT<.*>$", StringPrinter)
    collection.add_printer("exceptions", "^Vex[A-Z]\\w*$", ExceptionPrinter)
    collection.add_printer("variants", "^(tag)?VARIANT$", VariantPrinter)
    return collection


gdb.printing.register_pretty_printer(gdb.current_objfile(), printers(), replace=True)
