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
  const std::unique_ptr<char, void (*)(void*)> name(
      abi::__cxa_demangle(type.name(), nullptr, nullptr, &status), std::free);
  if (name) {
    return name.get();
  }
#endif
  std::string name = type.name();
  for (const std::string_view kind : {"class ", "struct "}) {
    if (name.starts_with(kind)) {
      name.erase(0, kind.size());
    }
  }
  return name;
}

}  // namespace qel::utilities
