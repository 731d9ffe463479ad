#pragma once

#include <string>
#include <typeinfo>

namespace qel::utilities {

/// The name of a type as it is written in source code, for use in messages. If that name is not
/// available, the compiler's internal name.
std::string typeName(const std::type_info& type);

}  // namespace qel::utilities
