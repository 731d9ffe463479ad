#pragma once

#include <filesystem>
#include <functional>
#include <vector>

#include "tools/records/Event.h"

namespace qel::support {

/// Reads new records of a session about twice a second, until the user ends the program. The file
/// is open only while it is read, so that the program that writes it can also remove it.
class Following {
 public:
  /// `reader` has read the session's records so far from the file.
  Following(std::filesystem::path file, records::EventReader reader)
      : file_(std::move(file)), reader_(std::move(reader)) {}

  /// Passes all new records to `show`. Returns when the user asks the program to end. Prints a
  /// warning on standard error if the file cannot be read for a time.
  void run(const std::function<void(const std::vector<records::Event>&)>& show);

 private:
  std::vector<records::Event> read();

  const std::filesystem::path file_;
  records::EventReader reader_;
  std::string lastFailure_;
};

}  // namespace qel::support
