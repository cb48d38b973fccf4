#include "leaving.h"

std::optional<ExportFailure> WhatLeaves(void (*call)()) {
    try {
        call();
        return std::nullopt;
    } catch (...) {
        ExportFailure failure;
        failure.NoteCurrentException();
        return failure;
    }
}
