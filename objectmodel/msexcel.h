// Excel's automation objects, typed: the way from an Application to a cell and back.
//
//     std::shared_ptr<MsExcel::Application> excel = MakeApplication(dispatch);
//     std::shared_ptr<MsExcel::Range> cell = excel->GetRange(TEXT("[Book1.xlsx]Sheet1!B2"));
//     OwnedVariant formula = cell->GetFormula2();
//
// For each of Excel's objects there is an abstract class here, with one operation for each property (Get...,
// Put...) and method that the library uses. Each operation is one late-bound call by DISPID through the
// object's IDispatch, unless its comment says more. Names, numbers and meanings are those of the Excel VBA
// reference on Microsoft's pages.
//
// Ownership. Each object holds one COM reference for its life, and lives behind a std::shared_ptr. Where
// Excel answers with no object, the pointer isn't empty: it leads to an object that holds null, and each
// operation on that raises E_POINTER without a call to Excel. Only Range::GetCurrentArray, Name::GetWorksheet
// and Name::GetWorkbook give empty pointers; each says when. For a VARIANT the signature tells:
//
//     VARIANT as result     the caller's to clear: put it into an OwnedVariant (owned.h)
//     VARIANT parameter     given away, and cleared whatever happens: owned.release(), or a fresh VARIANT
//     const VARIANT&        lent, and stays the caller's: owned, or any variable; a temporary VARIANT, such
//                           as VariantFromCStringW gives, is cleared after the call
//
// A variable that was given away must not be cleared or used again; an OwnedVariant sees to that.
//
// Texts. They pass whole, zero units included. Numbers of rows, columns and items count from 1.
//
// Failures. Unless an operation says otherwise it raises _com_error: E_POINTER where the object holds null,
// else what Excel answered, with Excel's own description where it gave one; E_OUTOFMEMORY where a text for
// Excel can't be allocated; and the error of VariantChangeType (DISP_E_TYPEMISMATCH, DISP_E_OVERFLOW) where
// the answer isn't of the expected kind. An object, or a text for the caller, that can't be allocated raises
// std::bad_alloc: an object before Excel is called, a text after it. The formula operations of Range,
// GetAddress, GetCurrentArray and Window::GetHwnd raise from the VexException family too. Nothing is retried:
// a busy Excel is a failure like any other. A failed call leaves the object as it was.
//
// Threads. An object may be used where its interface may: COM's apartment rules are the caller's. Shared
// pointers may be copied and released on any thread that may release the interface.
#pragma once

#include "objectmodel/addin.h"
#include "objectmodel/addins.h"
#include "objectmodel/application.h"
#include "objectmodel/areas.h"
#include "objectmodel/autocorrect.h"
#include "objectmodel/comment.h"
#include "objectmodel/documentproperties.h"
#include "objectmodel/documentproperty.h"
#include "objectmodel/excelwindows.h"
#include "objectmodel/hyperlink.h"
#include "objectmodel/hyperlinks.h"
#include "objectmodel/interior.h"
#include "objectmodel/listcolumn.h"
#include "objectmodel/listcolumns.h"
#include "objectmodel/listobject.h"
#include "objectmodel/listobjects.h"
#include "objectmodel/multithreadedcalculation.h"
#include "objectmodel/name.h"
#include "objectmodel/names.h"
#include "objectmodel/pivottable.h"
#include "objectmodel/pivottables.h"
#include "objectmodel/range.h"
#include "objectmodel/recentfile.h"
#include "objectmodel/recentfiles.h"
#include "objectmodel/sheets.h"
#include "objectmodel/types.h"
#include "objectmodel/window.h"
#include "objectmodel/workbook.h"
#include "objectmodel/workbooks.h"
#include "objectmodel/worksheet.h"

// The ways into the object model. Each asks `source`, which stays the caller's, for the interface of its kind
// and gives a new object on that. A null source, or one that has no such interface, gives an object that
// holds null; any other failure of QueryInterface raises _com_error. Nothing here starts or finds an Excel:
// the first interface always comes from the caller.
[[nodiscard]] std::shared_ptr<MsExcel::Application> MakeApplication(IUnknown* source);
[[nodiscard]] std::shared_ptr<MsExcel::Worksheet> MakeWorksheet(IUnknown* source);
[[nodiscard]] std::shared_ptr<MsExcel::Workbook> MakeWorkbook(IUnknown* source);
[[nodiscard]] std::shared_ptr<MsExcel::Range> MakeRange(IUnknown* source);
[[nodiscard]] std::shared_ptr<MsExcel::Window> MakeWindow(IUnknown* source);
