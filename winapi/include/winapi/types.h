// Windows' basic types. Wide characters have 16 bits, as on Windows; LONG and DWORD have 32 in both widths.
#pragma once

#include <cstddef>
#include <cstdint>

using CHAR = char;
using WCHAR = char16_t;
using BYTE = std::uint8_t;
using UCHAR = unsigned char;
using SHORT = std::int16_t;
using USHORT = std::uint16_t;
using WORD = std::uint16_t;
using INT = int;
using UINT = unsigned int;
using BOOL = int;
using LONG = std::int32_t;
using ULONG = std::uint32_t;
using DWORD = std::uint32_t;
using LONGLONG = std::int64_t;
using ULONGLONG = std::uint64_t;
using INT_PTR = std::intptr_t;
using UINT_PTR = std::uintptr_t;
using LONG_PTR = std::intptr_t;
using ULONG_PTR = std::uintptr_t;
using DWORD_PTR = std::uintptr_t;
using SIZE_T = std::size_t;
using FLOAT = float;
using DOUBLE = double;
using HRESULT = LONG;
using SCODE = LONG;
using LCID = DWORD;

using LPVOID = void*;
using PVOID = void*;
using LPCVOID = const void*;
using LPSTR = char*;
using LPCSTR = const char*;
using LPCCH = const char*;
using LPWSTR = WCHAR*;
using LPCWSTR = const WCHAR*;
using LPCWCH = const WCHAR*;
using LPBOOL = BOOL*;
using LPBYTE = BYTE*;
using LPDWORD = DWORD*;
using PUINT = UINT*;

using HANDLE = void*;
using HMODULE = struct HINSTANCE__*;
using HINSTANCE = HMODULE;
using FARPROC = INT_PTR (*)();

struct GUID {
    std::uint32_t Data1;
    std::uint16_t Data2;
    std::uint16_t Data3;
    std::uint8_t Data4[8];

    friend bool operator==(const GUID&, const GUID&) = default;
};
using IID = GUID;
using CLSID = GUID;
using REFIID = const IID&;
using REFCLSID = const CLSID&;
using REFGUID = const GUID&;

// Whole numbers of 64 bits, without the halves that Windows has beside them.
struct LARGE_INTEGER {
    LONGLONG QuadPart;
};
using PLARGE_INTEGER = LARGE_INTEGER*;
struct ULARGE_INTEGER {
    ULONGLONG QuadPart;
};
using PULARGE_INTEGER = ULARGE_INTEGER*;

// 100-nanosecond steps since the start of the year 1601, UTC.
struct FILETIME {
    DWORD dwLowDateTime;
    DWORD dwHighDateTime;
};
using PFILETIME = FILETIME*;
using LPFILETIME = FILETIME*;

// The calling conventions say nothing here: both sides of each call are built by one compiler.
#define WINAPI
#define APIENTRY
#define CALLBACK
#define PASCAL
#define STDMETHODCALLTYPE
#define __stdcall
#define __cdecl

#define TEXT_LITERAL(text) u##text
#define TEXT(text) TEXT_LITERAL(text)

#define TRUE 1
#define FALSE 0
#define MAX_PATH 260
#define INVALID_HANDLE_VALUE (reinterpret_cast<HANDLE>(static_cast<LONG_PTR>(-1)))

#define LOWORD(value) (static_cast<WORD>(static_cast<DWORD_PTR>(value) & 0xFFFF))
#define HIWORD(value) (static_cast<WORD>((static_cast<DWORD_PTR>(value) >> 16) & 0xFFFF))
