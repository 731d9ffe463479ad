#pragma once

#include <filesystem>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

#include "tools/collector/Sha256.h"

namespace qel::collector {

/// Who may send. Keeps only digests of what a client sends as its Basic authentication, so that
/// neither a user's name nor a secret can come to light from here, and an unknown user is not told
/// from a wrong secret: not by the answer and not by its time. Any thread once constructed.
class Credentials {
 public:
  /// Reads lines `user:secret`; blank lines and those that begin with `#` are skipped. Throws
  /// `tools::InputError` with `name` and the line for anything else, and without any user.
  Credentials(std::istream& lines, const std::string& name);

  /// The same from a file.
  static Credentials fromFile(const std::filesystem::path& file);

  /// Whether this is the value of an Authorization header that lets a user in.
  bool accept(std::string_view authorization) const;

 private:
  std::vector<Sha256> tokens_;
};

}  // namespace qel::collector
