#pragma once

#include <filesystem>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

#include "tools/collector/Sha256.h"

namespace qel::collector {

/// The users who may send. Keeps only digests of the Basic authentication, so it cannot disclose a
/// user's name or a secret. Neither the answer nor its time shows whether the user is unknown or
/// the secret is wrong. Any thread once constructed.
class Credentials {
 public:
  /// Reads lines `user:secret`. Skips blank lines and lines that begin with `#`. Throws
  /// `tools::InputError` with `name` and the line number for any other line, and for no user at
  /// all.
  Credentials(std::istream& lines, const std::string& name);

  /// The same from a file.
  static Credentials fromFile(const std::filesystem::path& file);

  /// Whether this value of an Authorization header belongs to a user.
  bool accept(std::string_view authorization) const;

 private:
  std::vector<Sha256> tokens_;
};

}  // namespace qel::collector
