#include "leaving.h"

std::optional<ExportFailure> WhatLeaves(void (*call)()) {
    try {
        call();
        return std::nullopt;
    } catch (...) {
        ExportFailure failure{FailureKind::Vex, 7, {}};  // as what stood there before
        failure.NoteCurrentException();
        return failure;
    }
}
