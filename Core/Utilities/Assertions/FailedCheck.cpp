#include "Core/Utilities/Assertions/FailedCheck.h"

#include <string>
#include <utility>

#include "host/QelAssert/Assert.h"

namespace qel::util {

void report(const CheckedClass& checked, const FailedCheck& failure) {
  if (!assert::Assert::isEnabled()) {
    return;
  }
  std::string function(checked.name);
  function.append("::").append(failure.operation);
  assert::Assert::addAssert(
      {std::string(failure.message), std::move(function), std::string(checked.file), failure.line});
}

}  // namespace qel::util
