#include "tools/report/CrashCode.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>

namespace qel::report {
namespace {

struct CodeName {
  std::uint32_t code;
  const char* name;
};

constexpr std::array<CodeName, 34> names{{{2, "signal SIGINT, interrupted"},
                                          {3, "signal SIGQUIT, quit"},
                                          {4, "signal SIGILL, illegal instruction"},
                                          {5, "signal SIGTRAP, breakpoint"},
                                          {6, "signal SIGABRT, aborted"},
                                          {7, "signal SIGBUS, bus error"},
                                          {8, "signal SIGFPE, arithmetic error"},
                                          {9, "signal SIGKILL, killed"},
                                          {11, "signal SIGSEGV, invalid memory access"},
                                          {13, "signal SIGPIPE, broken pipe"},
                                          {15, "signal SIGTERM, terminated"},
                                          {24, "signal SIGXCPU, CPU time limit exceeded"},
                                          {25, "signal SIGXFSZ, file size limit exceeded"},
                                          {31, "signal SIGSYS, bad system call"},
                                          {0x40000015, "fatal exit of the program"},
                                          {0x80000001, "guard page violation"},
                                          {0x80000002, "data misalignment"},
                                          {0x80000003, "breakpoint"},
                                          {0x80000004, "single step"},
                                          {0xC0000005, "access violation"},
                                          {0xC0000006, "in-page I/O error"},
                                          {0xC0000008, "invalid handle"},
                                          {0xC0000017, "out of memory"},
                                          {0xC000001D, "illegal instruction"},
                                          {0xC0000025, "noncontinuable exception"},
                                          {0xC0000094, "integer division by zero"},
                                          {0xC0000096, "privileged instruction"},
                                          {0xC00000FD, "stack overflow"},
                                          {0xC0000135, "DLL not found"},
                                          {0xC000013A, "ended by Ctrl-C"},
                                          {0xC0000374, "heap corruption"},
                                          {0xC0000409, "stack buffer overrun or fail fast"},
                                          {0xE0434352, ".NET exception"},
                                          {0xE06D7363, "C++ exception"}}};

}  // namespace

std::string crashCodeText(std::string_view code) {
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(code.data(), code.data() + code.size(), number);
  if (error != std::errc() || end != code.data() + code.size()) {
    return std::string(code);
  }
  if (number == 0) {
    return "";
  }
  constexpr std::uint32_t firstLarge = 256;
  std::array<char, 24> hexadecimal{};
  std::snprintf(hexadecimal.data(), hexadecimal.size(), number < firstLarge ? "0x%X (%u)" : "0x%X",
                number, number);
  const auto* const found = std::find_if(
      names.begin(), names.end(), [&](const CodeName& known) { return known.code == number; });
  return std::string(hexadecimal.data()) + (found == names.end() ? "" : ", ") +
         (found == names.end() ? "" : found->name);
}

}  // namespace qel::report
