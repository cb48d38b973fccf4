// What every class of the object model speaks in.
#pragma once

#include <windows.h>
#include <oleauto.h>
#include <atlstr.h>

#include <memory>

#include "objectmodel/com_ptr.h"
#include "objectmodel/owned.h"

// A macro of Windows' printing interface, which would rename the class of that name.
#undef DocumentProperties

namespace MsExcel {
class AddIn;
class AddIns;
class Application;
class Areas;
class AutoCorrect;
class Comment;
class DocumentProperties;
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
}  // namespace MsExcel

// The marker of an omitted optional argument: VT_ERROR with DISP_E_PARAMNOTFOUND. It is initialised before
// any code runs, lives as long as the process and is never cleared; it holds nothing.
extern const VARIANT MissingArgument;
