#pragma once

#include <filesystem>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

#include "tools/collector/Sha256.h"

namespace qel::collector {

/// The users who may send. Keeps only digests of the Basic authentication values, so it cannot
/// disclose a user name or a secret. Neither the result nor the duration of `accept` shows whether
/// the user is unknown or the secret is wrong. Thread-safe after construction.
class Credentials {
 public:
  /// Reads `user:secret` lines. Skips blank lines and lines that start with `#`. Throws
  /// `tools::InputError` with `name` and the line number for any other line and for a repeated
  /// user. Throws `tools::InputError` with `name` if there is no user.
  Credentials(std::istream& lines, const std::string& name);

  /// Reads the credentials from a file.
  static Credentials fromFile(const std::filesystem::path& file);

  /// Whether `authorization`, the value of an Authorization header, is valid for one of the users.
  bool accept(std::string_view authorization) const;

 private:
  std::vector<Sha256> tokens_;
};

}  // namespace qel::collector
