#pragma once

#include <string>
#include <vector>

#include "host/QelAssert/Assert.h"

namespace qel::test {

/// Collects what the constructing thread reports as failed assertions, for as long as it lives.
class AssertionRecorder {
 public:
  AssertionRecorder() {
    assert::AssertFunctionOne::registerHandler(
        [this](const assert::AssertInfo& info) { records_.push_back(info); });
  }
  ~AssertionRecorder() { assert::AssertFunctionOne::registerHandler({}); }
  AssertionRecorder(const AssertionRecorder&) = delete;
  AssertionRecorder& operator=(const AssertionRecorder&) = delete;

  const std::vector<assert::AssertInfo>& records() const { return records_; }

  /// One line per record: "function (file:line): message".
  std::vector<std::string> lines() const {
    std::vector<std::string> lines;
    for (const auto& info : records_) {
      lines.push_back(info.function + " (" + info.file + ":" + std::to_string(info.line) +
                      "): " + info.message);
    }
    return lines;
  }

 private:
  std::vector<assert::AssertInfo> records_;
};

}  // namespace qel::test
