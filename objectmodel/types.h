// What every class of the object model speaks in.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <atlstr.h>

#include <memory>

#include "objectmodel/com_ptr.h"
#include "objectmodel/owned.h"

namespace MsExcel {
class AddIn;
class AddIns;
class Application;
class Areas;
class AutoCorrect;
class Comment;
class DocumentPropertiesClass;
class DocumentProperty;
class Hyperlink;
class Hyperlinks;
class Interior;
class ListColumn;
class ListColumns;
class ListObject;
class ListObjects;
class MultiThreadedCalculationClass;
class Name;
class Names;
class PivotTable;
class PivotTables;
class Range;
class RecentFile;
class RecentFiles;
class Sheets;
class Window;
class Windows;
class Workbook;
class Workbooks;
class Worksheet;

// Windows' printing interface has a macro of this name, which makes it one of the other two: the class is found
// by the name in either case, and is the same one whether or not a caller's headers have the macro.
using DocumentProperties = DocumentPropertiesClass;
using DocumentPropertiesA = DocumentPropertiesClass;
using DocumentPropertiesW = DocumentPropertiesClass;
}  // namespace MsExcel

// The marker of an omitted optional argument: VT_ERROR with DISP_E_PARAMNOTFOUND. It is initialised before
// any code runs, lives as long as the process and is never cleared; it holds nothing.
extern const VARIANT MissingArgument;
