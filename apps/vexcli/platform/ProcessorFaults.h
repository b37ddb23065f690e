#pragma once

namespace vexcli {

// Faults that compilers and systems reach in different ways.

/// Whether dividing an integer by zero ends a program here; ARM processors give 0.
extern const bool isDivisionByZeroCaught;

/// Null where the system has none.
extern void (*const illegalInstruction)();
extern void (*const busError)();

} // namespace vexcli
