// What leaves an export, the same in both homes: on Windows the exception that a host written in C takes,
// natively the C++ exception.
#pragma once

#include "addin/detail/atborder.h"

#include <optional>

// What left `call`; nothing when it went through.
std::optional<ExportFailure> WhatLeaves(void (*call)());
