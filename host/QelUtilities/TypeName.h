#pragma once

#include <string>
#include <typeinfo>

namespace qel::utilities {

/// The name of a type as it is written in source code, for messages; the compiler's own name where
/// that cannot be had.
std::string typeName(const std::type_info& type);

}  // namespace qel::utilities
