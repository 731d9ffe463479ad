#include "host/QelUtilities/TypeName.h"

#include <string_view>

#if __has_include(<cxxabi.h>)
#include <cstdlib>
#include <memory>

#include <cxxabi.h>
#endif

namespace qel::utilities {

std::string typeName(const std::type_info& type) {
#if __has_include(<cxxabi.h>)
  int status = 0;
  const std::unique_ptr<char, void (*)(void*)> demangled(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
  if (demangled) {
    return demangled.get();
  }
#endif
  // Some compilers put the kind of type before the name.
  std::string_view name = type.name();
  for (const std::string_view kind : {"class ", "struct "}) {
    if (name.starts_with(kind)) {
      name.remove_prefix(kind.size());
    }
  }
  return std::string(name);
}

}  // namespace qel::utilities
