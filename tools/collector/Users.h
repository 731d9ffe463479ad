#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <istream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/QelUtilities/Mutex.h"
#include "tools/collector/Allowance.h"
#include "tools/collector/Sha256.h"
#include "tools/collector/UserFile.h"

namespace qel::collector {

struct UserLimits {
  double requestsPerSecond = 2000;  ///< all customers of a program may share a user
  double bytesPerSecond = 100e6;
  std::chrono::seconds burst{60};  ///< a user may use the allowance of this time at once
};

/// The users who may send, from a file of `user:secret` lines.
///
/// **Secrets.** A secret that starts with `$` and contains another `$` is a hash, as
/// `mkpasswd --method=yescrypt` prints it; bcrypt and SHA-512 are supported as well. Any other
/// secret is plain text. Only keyed digests of plain secrets are kept, so they cannot be disclosed.
///
/// **Time.** Neither the result nor the duration of a check shows whether the user is unknown or
/// the secret is wrong.
///
/// **Threads.** Thread-safe.
class Users {
 public:
  /// The result of a check: the name of the user, or `std::nullopt` if there is no such user or the
  /// secret is wrong.
  using Identity = std::optional<std::string>;

  /// Reads `user:secret` lines. Skips blank lines and lines that start with `#`; ignores a byte
  /// order mark and blanks at the ends of lines. Throws `tools::InputError` with `name` and the
  /// line number for any other line, for a hash that is malformed or not supported, and for a
  /// repeated user, and with `name` if there is no user.
  Users(std::istream& lines, const std::string& name, const UserLimits& limits = {});

  /// Reads the users from a file. Logs a warning if any user of the machine may open it.
  static std::shared_ptr<Users> fromFile(const std::filesystem::path& file,
                                         const UserLimits& limits = {});

  /// Takes over the remembered secrets and the allowances of users that both have.
  void continueFrom(const Users& before);

  /// Checks the value of an Authorization header. Returns at once: `std::nullopt` means that only
  /// `checkHash` can decide.
  std::optional<Identity> checkAtOnce(std::string_view authorization) const;

  /// The same, also with hashes, which takes up to a tenth of a second of processor time. Remembers
  /// the last accepted secret of each user for `checkAtOnce`.
  Identity checkHash(std::string_view authorization);

  /// Takes a request from a user's allowance and returns zero, or returns how long to wait.
  std::chrono::seconds admit(const std::string& user, std::chrono::steady_clock::time_point now);

  /// Takes the bytes that were received from the allowance of a user.
  void charge(const std::string& user, std::uint64_t bytes,
              std::chrono::steady_clock::time_point now);

 private:
  struct User {
    std::string hash;                  ///< empty if the secret is plain
    std::optional<Sha256> remembered;  ///< the digest of an accepted secret that has a hash
    Allowance requests;
    Allowance bytes;
  };

  Users(const std::vector<UserLine>& lines, const UserLimits& limits);
  void remember(const std::string& name, const Sha256& digest);

  const UserLimits limits_;
  std::vector<std::string> hashes_;  ///< constant after construction
  mutable utilities::Mutex mutex_;
  std::map<std::string, User> users_ QEL_GUARDED_BY(mutex_);
  /// Users by the digests of accepted texts `user:secret`. Has at most one digest for each user.
  std::map<Sha256, std::string> accepted_ QEL_GUARDED_BY(mutex_);
};

}  // namespace qel::collector
