// The object model beside the same calls written by hand on IDispatch::Invoke, with nothing in between: what
// the types, the checks and the shared objects cost. "bare" is an object that answers at once, so that
// nothing hides the cost; "server" is the automation server in memory, which does what it is asked.

#include "support/operation.h"

#include <cstdlib>
#include <string>

#include "excelhost/automation/server.h"
#include "objectmodel/detail/interfaces.h"
#include "objectmodel/msexcel.h"

namespace {

constexpr DISPID cells = 238, count = 118, item = 170, rows = 258, text = 138, value2 = 1388, workbooks = 572,
                 worksheets = 494;

void Require(HRESULT hresult) {
    if (FAILED(hresult)) std::abort();
}

// The calls that a programmer writes who knows what comes back.

VARIANT Get(IDispatch* object, DISPID dispid, VARIANT* arguments = nullptr, UINT argumentCount = 0) {
    DISPPARAMS parameters{arguments, nullptr, argumentCount, 0};
    VARIANT result;
    VariantInit(&result);
    EXCEPINFO exception{};
    UINT badArgument = 0;
    Require(object->Invoke(dispid, IID_NULL, 0, DISPATCH_PROPERTYGET, &parameters, &result, &exception,
                           &badArgument));
    return result;
}

IDispatch* GetObjectOf(IDispatch* object, DISPID dispid) {
    const VARIANT result = Get(object, dispid);
    if (result.vt != VT_DISPATCH) std::abort();
    return result.pdispVal;
}

LONG GetLong(IDispatch* object, DISPID dispid) {
    const VARIANT result = Get(object, dispid);
    if (result.vt != VT_I4) std::abort();
    return result.lVal;
}

class Bare final : public IDispatch {
  public:
    explicit Bare(VARTYPE answers) noexcept : type(answers) {}
    virtual ~Bare() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** object) override {
        *object = static_cast<IDispatch*>(this);
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                                     UINT*) override {
        result->vt = type;
        if (type == VT_BSTR) {
            result->bstrVal = SysAllocString(TEXT("1,234.50"));
        } else {
            result->lVal = 42;
        }
        return S_OK;
    }

  private:
    VARTYPE type;
};

// One sheet with a hundred numbers in each of a hundred rows.
struct Sheet {
    static constexpr LONG side = 100;

    Sheet() {
        server.recording = false;
        application = MakeApplication(kestrolumen::ComPtr<IDispatch>::Adopt(server.NewApplication()).get());
        worksheet = application->GetWorkbooks()->GetItem(1)->GetWorksheets()->GetItem(1);
        worksheet->PutName(TEXT("Data"));
        for (LONG row = 1; row <= side; ++row) {
            for (SHORT column = 1; column <= side; ++column) {
                VARIANT number{};
                number.vt = VT_R8;
                number.dblVal = row * 1000.0 + column;
                worksheet->GetCell(row, column)->PutValue2(number);
            }
        }
    }

    excelhost::automation::AutomationServer server;
    std::shared_ptr<MsExcel::Application> application;
    std::shared_ptr<MsExcel::Worksheet> worksheet;
};

Sheet& TheSheet() {
    static Sheet sheet;
    return sheet;
}

void LongBareOurs(benchmark::State& state) {
    Bare object(VT_I4);
    const auto range = MakeRange(&object);
    bench::Measure(state, bench::Least{}, [&] { benchmark::DoNotOptimize(range->GetCount()); });
}
BENCHMARK(LongBareOurs)->Name("get_long_bare/ours");

void LongBareByHand(benchmark::State& state) {
    Bare object(VT_I4);
    IDispatch* dispatch = &object;
    benchmark::DoNotOptimize(dispatch);
    for (auto _ : state) benchmark::DoNotOptimize(GetLong(dispatch, count));
}
BENCHMARK(LongBareByHand)->Name("get_long_bare/by_hand");

void LongServerOurs(benchmark::State& state) {
    const auto used = TheSheet().worksheet->GetUsedRange();
    for (auto _ : state) benchmark::DoNotOptimize(used->GetCount());
}
BENCHMARK(LongServerOurs)->Name("get_long_server/ours");

void LongServerByHand(benchmark::State& state) {
    const auto used = TheSheet().worksheet->GetUsedRange();
    for (auto _ : state) benchmark::DoNotOptimize(GetLong(used->GetDispatch(), count));
}
BENCHMARK(LongServerByHand)->Name("get_long_server/by_hand");

void TextBareOurs(benchmark::State& state) {
    Bare object(VT_BSTR);
    const auto range = MakeRange(&object);
    bench::Measure(state, bench::Least{1, 1},
                   [&] { benchmark::DoNotOptimize(range->GetText().GetLength()); });
}
BENCHMARK(TextBareOurs)->Name("get_text_bare/ours");

void TextBareByHand(benchmark::State& state) {
    Bare object(VT_BSTR);
    IDispatch* dispatch = &object;
    benchmark::DoNotOptimize(dispatch);
    for (auto _ : state) {
        VARIANT result = Get(dispatch, text);
        benchmark::DoNotOptimize(
            CStringW(result.bstrVal, static_cast<int>(SysStringLen(result.bstrVal))).GetLength());
        VariantClear(&result);
    }
}
BENCHMARK(TextBareByHand)->Name("get_text_bare/by_hand");

// Each of ten thousand cells by row and column, and its number.
void CellsOurs(benchmark::State& state) {
    const auto used = TheSheet().worksheet->GetUsedRange();
    for (auto _ : state) {
        double sum = 0;
        for (LONG row = 1; row <= Sheet::side; ++row) {
            for (LONG column = 1; column <= Sheet::side; ++column) {
                sum += OwnedVariant(used->GetItem(row, column)->GetValue2())->dblVal;
            }
        }
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(CellsOurs)->Name("items_of_10000_cells/ours")->Unit(benchmark::kMillisecond);

void CellsByHand(benchmark::State& state) {
    const auto used = TheSheet().worksheet->GetUsedRange();
    for (auto _ : state) {
        double sum = 0;
        for (LONG row = 1; row <= Sheet::side; ++row) {
            for (LONG column = 1; column <= Sheet::side; ++column) {
                VARIANT place[2]{};
                place[0].vt = place[1].vt = VT_I4;
                place[0].lVal = column;
                place[1].lVal = row;
                VARIANT answer = Get(used->GetDispatch(), item, place, 2);
                void* cell = nullptr;
                Require(answer.pdispVal->QueryInterface(IidRange, &cell));
                VariantClear(&answer);
                VARIANT number = Get(static_cast<IDispatch*>(cell), value2);
                sum += number.dblVal;
                VariantClear(&number);
                static_cast<IDispatch*>(cell)->Release();
            }
        }
        benchmark::DoNotOptimize(sum);
    }
}
BENCHMARK(CellsByHand)->Name("items_of_10000_cells/by_hand")->Unit(benchmark::kMillisecond);

// From the application by names to the sheet, and the size of the sheet.
void SizeOurs(benchmark::State& state) {
    Sheet& sheet = TheSheet();
    const CStringW book = sheet.worksheet->GetWorkbook()->GetName();
    const CStringW name = sheet.worksheet->GetName();
    for (auto _ : state) {
        const auto found = sheet.application->GetWorkbooks()->GetItem(book)->GetWorksheets()->GetItem(name);
        benchmark::DoNotOptimize(found->GetCells()->GetRows()->GetCount());
    }
}
BENCHMARK(SizeOurs)->Name("sheet_by_name_and_size/ours");

void SizeByHand(benchmark::State& state) {
    Sheet& sheet = TheSheet();
    const CStringW book = sheet.worksheet->GetWorkbook()->GetName();
    const CStringW name = sheet.worksheet->GetName();
    const auto itemByName = [](IDispatch* collection, const CStringW& itsName) {
        VARIANT argument{};
        argument.vt = VT_BSTR;
        argument.bstrVal = SysAllocString(itsName.GetString());
        const VARIANT result = Get(collection, item, &argument, 1);
        VariantClear(&argument);
        return result.pdispVal;
    };
    for (auto _ : state) {
        IDispatch* const books = GetObjectOf(sheet.application->GetDispatch(), workbooks);
        IDispatch* const workbook = itemByName(books, book);
        IDispatch* const sheets = GetObjectOf(workbook, worksheets);
        IDispatch* const found = itemByName(sheets, name);
        void* worksheet = nullptr;
        Require(found->QueryInterface(IidWorksheet, &worksheet));
        IDispatch* const all = GetObjectOf(static_cast<IDispatch*>(worksheet), cells);
        IDispatch* const allRows = GetObjectOf(all, rows);
        benchmark::DoNotOptimize(GetLong(allRows, count));
        for (IDispatch* each :
             {allRows, all, static_cast<IDispatch*>(worksheet), found, sheets, workbook, books}) {
            each->Release();
        }
    }
}
BENCHMARK(SizeByHand)->Name("sheet_by_name_and_size/by_hand");

}  // namespace
