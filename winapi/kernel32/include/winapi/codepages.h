// Code pages: MultiByteToWideChar, WideCharToMultiByte and their kin, as Microsoft's winnls.h describes them.
//
// Known pages: UTF-8 (65001) and, by the C library's iconv, 437, 850, 852, 855, 857, 858, 860 to 863, 865,
// 866, 874, 932, 936, 949, 950 and 1250 to 1258. Iconv is asked once for each page, by the first thread that
// needs it.
//
// Where Microsoft leaves a choice or a table unpublished:
// - there is no best fit: a character that the page lacks becomes the default character, as it does on
//   Windows under WC_NO_BEST_FIT_CHARS;
// - the users' own characters of pages 936, 949 and 950 mean nothing, those of page 932 are there;
// - ill-formed UTF-8 becomes one U+FFFD for each maximal subpart (The Unicode Standard, 3.9);
// - text whose converted length exceeds INT_MAX is refused with ERROR_INVALID_PARAMETER.
#pragma once

#include "winapi/types.h"

#define CP_ACP 0  // the ANSI code page: 1252, or what winapi/control.h says
#define CP_UTF8 65001

#define MB_ERR_INVALID_CHARS 0x00000008  // fail with ERROR_NO_UNICODE_TRANSLATION instead of replacing
#define WC_ERR_INVALID_CHARS 0x00000080  // the same, for UTF-8 only
#define WC_NO_BEST_FIT_CHARS 0x00000400  // what is always done here

#define MAX_LEADBYTES 12

struct CPINFO {
    UINT MaxCharSize;              // bytes
    BYTE LeadByte[MAX_LEADBYTES];  // pairs of first and last, ended by a pair of zeros
};
using LPCPINFO = CPINFO*;

struct CPINFOEXW {
    UINT MaxCharSize;
    BYTE LeadByte[MAX_LEADBYTES];
    WCHAR UnicodeDefaultChar;  // what stands for bytes that mean nothing in the page
    UINT CodePage;
    WCHAR CodePageName[MAX_PATH];
};
using LPCPINFOEXW = CPINFOEXW*;

// The ANSI code page.
[[nodiscard]] UINT WINAPI GetACP() noexcept;

// False, with ERROR_INVALID_PARAMETER, for an unknown page or a null `info`. `flags` must be 0.
BOOL WINAPI GetCPInfo(UINT codePage, LPCPINFO info) noexcept;
BOOL WINAPI GetCPInfoExW(UINT codePage, DWORD flags, LPCPINFOEXW info) noexcept;

// Whether the byte opens a double-byte character of the page. False for an unknown page and for UTF-8.
[[nodiscard]] BOOL WINAPI IsDBCSLeadByteEx(UINT codePage, BYTE byte) noexcept;

// Both conversions take a source of `sourceLength` units, or one that ends with a zero unit when the length
// is negative; the terminator is then converted too. They give the units written, or those needed when
// `destinationSize` is 0. A result of 0 is a failure and GetLastError tells it:
// ERROR_INSUFFICIENT_BUFFER, ERROR_INVALID_FLAGS, ERROR_INVALID_PARAMETER (an unknown page, a null or empty
// source, a null destination with a size, source and destination the same) or ERROR_NO_UNICODE_TRANSLATION.
// What a failed call left in the destination is of no use.
int WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCCH source, int sourceLength, LPWSTR destination,
                               int destinationSize) noexcept;

// `defaultChar`: one character of the page, or null for the page's own. `usedDefaultChar`, if not null, is
// told whether it had to be used. Both must be null for UTF-8. A surrogate pair that the page lacks becomes
// two default characters, one a unit.
int WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWCH source, int sourceLength, LPSTR destination,
                               int destinationSize, LPCCH defaultChar, LPBOOL usedDefaultChar) noexcept;
