#pragma once

namespace qel::utilities {

/// Keeps the DLL or program that contains `code` loaded until the process ends. Required if the
/// system may still run its code after the host has unloaded it, for example on a detached thread.
/// Only Windows needs this call: ELF libraries of this kind are linked with `-z nodelete`.
void keepLoaded(void (*code)());

/// Calls `action` when the process exits by `exit` or by the end of `main`, while its other threads
/// still run. Actions run in the reverse order of their registration. The library that contains the
/// action must stay loaded until the process ends; on Windows this function ensures that.
///
/// **Windows.** The handlers of `std::atexit` and the static destructors of a DLL run later, when
/// the system has already terminated the other threads, which may have left mutexes locked. The
/// action is not called if the host exits in another way or uses another C library.
void beforeExit(void (*action)());

}  // namespace qel::utilities
