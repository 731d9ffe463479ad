#pragma once

#include <optional>
#include <string>

namespace qel::collector {

/// Whether a secret of the users file is a hash: it starts with `$` and contains another `$`.
bool isHash(const std::string& secret);

/// The part of a hash that determines the duration of a check. Throws `tools::InputError` unless
/// this is a hash by yescrypt, bcrypt or SHA-512, as `mkpasswd` prints them.
std::string parametersOf(const std::string& hash);

/// The hash of a secret with the parameters and the salt of another hash. `std::nullopt` if the
/// parameters, the salt or the secret are invalid. Takes up to a tenth of a second of processor
/// time and 16 MB with the defaults of `mkpasswd`.
std::optional<std::string> hashOf(const std::string& secret, const std::string& like);

}  // namespace qel::collector
