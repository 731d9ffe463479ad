#pragma once

#include <string>

namespace qel::c {

/// A copy of an argument of a caller. Throws `CallError`, which names the argument, if it is null
/// or not UTF-8.
std::string requiredText(const char* argument, const char* name);

/// The same, but empty if the argument is null.
std::string optionalText(const char* argument, const char* name);

}  // namespace qel::c
