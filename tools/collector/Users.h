#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <istream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qel::collector {

struct UserLimits {
  double requestsPerSecond = 100;
  double bytesPerSecond = 20e6;
  std::chrono::seconds burst{60};  ///< a user may use the allowance of this time at once
};

/// The users who may send, from a file of `user:secret` lines. A secret is plain text or a hash as
/// `mkpasswd --method=yescrypt` prints it. Keeps only digests of plain secrets, so it cannot
/// disclose them.
///
/// **Time.** Neither the result nor the duration of a check shows whether the user is unknown or
/// the secret is wrong.
///
/// **Threads.** Thread-safe after construction.
class Users {
 public:
  /// The result of a check: the name of the user, or `std::nullopt` if there is no such user or the
  /// secret is wrong.
  using Identity = std::optional<std::string>;

  /// Reads `user:secret` lines. Skips blank lines and lines that start with `#`; ignores a byte
  /// order mark and blanks at the ends of lines. Throws `tools::InputError` with `name` and the
  /// line number for any other line and for a repeated user, and with `name` if there is no user.
  Users(std::istream& lines, const std::string& name, const UserLimits& limits = {});
  ~Users();

  /// Reads the users from a file.
  static std::shared_ptr<Users> fromFile(const std::filesystem::path& file,
                                         const UserLimits& limits = {});

  /// Checks the value of an Authorization header. Returns at once: `std::nullopt` means that only
  /// `checkHash` can decide.
  std::optional<Identity> checkAtOnce(std::string_view authorization) const;

  /// The same, also with hashes, which takes up to a tenth of a second of processor time. Remembers
  /// accepted secrets for `checkAtOnce`.
  Identity checkHash(std::string_view authorization);

  /// Takes a request of this size from the allowance of a user. Returns how long the user has to
  /// wait; zero if the request is within the allowance.
  std::chrono::seconds admit(const std::string& user, std::uint64_t bytes,
                             std::chrono::steady_clock::time_point now);
};

}  // namespace qel::collector
