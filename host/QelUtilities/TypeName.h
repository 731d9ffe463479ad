#pragma once

#include <string>
#include <typeinfo>

namespace qel::utilities {

/// The name of a type as source code writes it, for messages. Where that is not available, the
/// compiler's own name.
std::string typeName(const std::type_info& type);

}  // namespace qel::utilities
