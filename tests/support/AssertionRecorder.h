#pragma once

#include <vector>

#include "host/QelAssert/Assert.h"

namespace qel::test {

/// Collects the failed assertions of the constructing thread during its lifetime.
class AssertionRecorder {
 public:
  AssertionRecorder() {
    assert::AssertFunctionOne::registerHandler([this](const assert::AssertInfo& info) {
      lines_.push_back(info.function + " (" + info.file + ":" + std::to_string(info.line) +
                       "): " + info.message);
    });
  }
  ~AssertionRecorder() { assert::AssertFunctionOne::registerHandler({}); }
  AssertionRecorder(const AssertionRecorder&) = delete;
  AssertionRecorder& operator=(const AssertionRecorder&) = delete;

  /// One line per assertion: "function (file:line): message".
  const std::vector<std::string>& lines() const { return lines_; }

 private:
  std::vector<std::string> lines_;
};

}  // namespace qel::test
