// Addresses in other workbooks: how they are taken apart, and when Application::GetRange does so.
#include "objectmodel/detail/externalreference.h"

#include <string>

#include <comdef.h>
#include <gmock/gmock.h>

#include "objectmodel/interfaces.h"
#include "objectmodel/msexcel.h"
#include "scripted_object.h"

namespace {

using scripted::Empty;
using scripted::Fails;
using scripted::Gives;
using scripted::GivesObject;
using testing::ElementsAre;

std::string Narrow(const CStringW& text) {
    return std::string(text.GetString(), text.GetString() + text.GetLength());
}

TEST(ExternalReference, Parts) {
    const struct {
        const WCHAR* text;
        const char* expected;  // workbook, sheet and cell, parted by bars; empty for no reference
    } cases[] = {
        {TEXT("[Other.xlsx]Sheet2!$B$4"), "Other.xlsx|Sheet2|$B$4"},
        {TEXT("'[My Book.xlsx]My Sheet'!A1"), "My Book.xlsx|My Sheet|A1"},
        {TEXT("'[It''s.xlsx]It''s'!A1:B2"), "It''s.xlsx|It''s|A1:B2"},
        {TEXT("[a!b.xlsx]S!A1"), "a!b.xlsx|S|A1"},
        {TEXT("[a]b]S!A1"), "a|b]S|A1"},
        {TEXT("[a]S!"), "a|S|"},
        {TEXT("[a]!A1"), "a||A1"},
        {TEXT("[]S!A1"), "|S|A1"},
        {TEXT("[a]S'!A1"), "a|S'|A1"},
        {TEXT("'[a]S!A1"), "a|S|A1"},
        // The bracket is skipped by its place, not looked for.
        {TEXT("C:\\dir\\[Book.xlsx]S!A1"), ":\\dir\\[Book.xlsx|S|A1"},
        {TEXT("'C:\\dir\\[Book.xlsx]S'!A1"), ":\\dir\\[Book.xlsx|S|A1"},
        {TEXT("]S!A1"), "|S|A1"},
        {TEXT("']S'!A1"), "|S|A1"},
        {TEXT("Sheet2!A1"), ""},
        {TEXT("A1"), ""},
        {TEXT(""), ""},
        {TEXT("!A1"), ""},
        {TEXT("!"), ""},
        {TEXT("'!"), ""},
        {TEXT("''!"), ""},
        {TEXT("[a]S"), ""},
        {TEXT("S!A1]"), ""},
    };
    for (const auto& [text, expected] : cases) {
        const detail::ParsedExternalReference reference{CStringW(text)};
        const bool valid = *expected != 0;
        EXPECT_EQ(reference.valid, valid) << Narrow(text);
        const std::string parts =
            Narrow(reference.workbook) + "|" + Narrow(reference.sheet) + "|" + Narrow(reference.cell);
        EXPECT_EQ(parts, valid ? expected : "||");
    }
}

constexpr DISPID range = 197, item = 170, workbooks = 572, worksheets = 494;

struct World {
    World() {
        application.interfaces = {IidApplication};
        sheet.interfaces = {IidWorksheet};
        application.answers[range] = Fails(static_cast<HRESULT>(0x800A03EC));
        application.answers[workbooks] = GivesObject(books);
        books.answers[item] = GivesObject(book);
        book.answers[worksheets] = GivesObject(sheets);
        sheets.answers[item] = GivesObject(sheet);
        sheet.answers[range] = GivesObject(cell);
    }
    HRESULT Attempt(const WCHAR* address) {
        try {
            found = MakeApplication(&application)->GetRange(CStringW(address));
            return S_OK;
        } catch (const _com_error& error) {
            return error.Error();
        }
    }

    scripted::Object application, books, book, sheets, sheet, cell;
    std::shared_ptr<MsExcel::Range> found;
};

TEST(GetRange, APlainAddressIsOneCall) {
    World world;
    world.application.answers[range] = GivesObject(world.cell);
    EXPECT_EQ(world.Attempt(TEXT("B2:C5")), S_OK);
    ASSERT_EQ(world.application.calls.size(), 1U);
    EXPECT_THAT(world.application.calls[0].arguments, ElementsAre("BSTR B2:C5"));
    EXPECT_EQ(world.cell.count, 2U);
    world.found.reset();
}

TEST(GetRange, AnAddressElsewhereIsWalked) {
    World world;
    EXPECT_EQ(world.Attempt(TEXT("'[My Book.xlsx]My Sheet'!$B$4")), S_OK);
    ASSERT_EQ(world.application.calls.size(), 2U);
    EXPECT_THAT(world.books.calls[0].arguments, ElementsAre("BSTR My Book.xlsx"));
    EXPECT_EQ(world.books.calls[0].flags, DISPATCH_PROPERTYGET);
    EXPECT_THAT(world.sheets.calls[0].arguments, ElementsAre("BSTR My Sheet"));
    EXPECT_THAT(world.sheet.calls[0].arguments, ElementsAre("BSTR $B$4"));
    EXPECT_EQ(world.found->GetDispatch(), static_cast<IDispatch*>(&world.cell));
    EXPECT_EQ(world.cell.count, 2U);
    world.found.reset();
}

TEST(GetRange, WhatGoesWrong) {
    const auto first = static_cast<HRESULT>(0x800A03EC);
    const WCHAR* const elsewhere = TEXT("[B.xlsx]S!A1");
    {
        World world;
        EXPECT_EQ(world.Attempt(TEXT("A1:")), first);
        EXPECT_EQ(world.Attempt(TEXT("Sheet2!A1")), first);
        EXPECT_EQ(world.application.calls.size(), 2U) << "no other form is tried";
    }
    {
        World world;
        world.books.answers[item] = Gives(Empty(VT_DISPATCH));
        EXPECT_EQ(world.Attempt(elsewhere), E_POINTER) << "no such workbook";
    }
    {
        World world;
        world.sheet.interfaces.clear();
        EXPECT_EQ(world.Attempt(elsewhere), E_POINTER) << "no worksheet";
    }
    {
        World world;
        world.sheet.answers[range] = Fails(RPC_E_CALL_REJECTED);
        EXPECT_EQ(world.Attempt(elsewhere), RPC_E_CALL_REJECTED) << "in place of the first failure";
    }
    {
        World world;
        world.application.answers[range] = [](VARIANT*, EXCEPINFO*) -> HRESULT { throw 5; };
        EXPECT_THROW(world.Attempt(TEXT("A1")), int) << "whatever it was goes up again";
        EXPECT_EQ(world.Attempt(elsewhere), S_OK) << "and is caught like any other";
        world.found.reset();
    }
    World world;
    world.sheet.answers[range] = Gives(Empty(VT_DISPATCH));
    EXPECT_EQ(world.Attempt(elsewhere), S_OK);
    EXPECT_TRUE(world.found->IsNull());
}

}  // namespace
