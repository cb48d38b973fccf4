// Where things are: the folders of sibling products, as the registry tells them, and folders of the system.
//
// Those of products are values below HKEY_LOCAL_MACHINE, in the 32-bit view, of kind REG_SZ or REG_EXPAND_SZ
// (expanded then). They come with one trailing backslash; an empty text counts as "C:".
#pragma once

#include "text/text.h"

#include <cstdint>

// "Program Directory" in Software\Quillmar\Ombrage for Excel\<version>.0; "C:\" where that can't be read.
[[nodiscard]] CStringW OmbrageProgramDirectory(std::int32_t version);

// "Program Directory" in Software\Quillmar\Tallyhost; "C:\" where that can't be read.
[[nodiscard]] CStringW TallyhostProgramDirectory();

// "System Directory" in Software\Quillmar. Raises VexRegKeyOpenFailed for a missing key and
// VexRegValueReadFailed for a missing value or one of another kind, as RegistryKey does.
[[nodiscard]] CStringW QuillmarSystemDirectory();

// The folder for data of programs that all users share, and the user's own for roaming data, without a
// trailing backslash or with it. Where the system gives none: empty, and "\".
[[nodiscard]] CStringW CommonAppDataDirectory();
[[nodiscard]] CStringW CommonAppDataDirectorySlash();
[[nodiscard]] CStringW AppDataDirectory();
[[nodiscard]] CStringW AppDataDirectorySlash();

// The folder of the system's own libraries, with a trailing backslash; "\" where the system gives none.
[[nodiscard]] CStringW SystemDirectory();
