#include "tools/collector/Users.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <strings.h>

#include "host/QelUtilities/Exception.h"
#include "tools/collector/PasswordHash.h"

namespace qel::collector {
namespace {

using utilities::MutexLock;

constexpr std::string_view scheme = "Basic ";

/// The digest of a text and a secret of this process. Its first bytes show nothing about the text,
/// so a search among digests need not take the same time for all texts.
Sha256 keyedDigest(const std::string& text) {
  static const std::string key = [] {
    std::string bytes(Sha256().size(), '\0');
    if (RAND_bytes(reinterpret_cast<unsigned char*>(bytes.data()),
                   static_cast<int>(bytes.size())) != 1) {
      throw qel::exception("cannot create a random key");
    }
    return bytes;
  }();
  return sha256(key + text);
}

/// The text `user:secret` of an Authorization header; `std::nullopt` if the header has another
/// form.
std::optional<std::string> textOf(std::string_view authorization) {
  if (authorization.size() <= scheme.size() ||
      strncasecmp(authorization.data(), scheme.data(), scheme.size()) != 0) {
    return std::nullopt;
  }
  authorization.remove_prefix(
      std::min(authorization.find_first_not_of(' ', scheme.size()), authorization.size()));
  const auto bytes = [](auto& text) { return reinterpret_cast<unsigned char*>(text.data()); };
  std::string code(authorization);
  std::string text(code.size() + 1, '\0');
  const int decoded = EVP_DecodeBlock(bytes(text), bytes(code), static_cast<int>(code.size()));
  const auto padding = static_cast<int>(std::count(code.begin(), code.end(), '='));
  if (decoded < padding || padding > 2) {
    return std::nullopt;
  }
  text.resize(static_cast<std::size_t>(decoded - padding));
  // OpenSSL ignores blanks and some wrong bits.
  std::string again(code.size() + 4, '\0');
  again.resize(static_cast<std::size_t>(
      EVP_EncodeBlock(bytes(again), bytes(text), static_cast<int>(text.size()))));
  return again == code ? std::optional(text) : std::nullopt;
}

}  // namespace

Users::Users(std::istream& lines, const std::string& name, const UserLimits& limits)
    : Users(readUsers(lines, name), limits) {}

std::shared_ptr<Users> Users::fromFile(const std::filesystem::path& file,
                                       const UserLimits& limits) {
  return std::shared_ptr<Users>(new Users(readUsers(file), limits));
}

Users::Users(const std::vector<UserLine>& lines, const UserLimits& limits) : limits_(limits) {
  for (const auto& [user, secret] : lines) {
    if (isHash(secret)) {
      hashes_.push_back(secret);
      users_[user].hash = secret;
    } else {
      users_[user];
      std::string text = user;
      accepted_.emplace(keyedDigest(text.append(1, ':').append(secret)), user);
    }
  }
}

void Users::continueFrom(const Users& before) {
  std::map<std::string, User> known;
  {
    const MutexLock lock(before.mutex_);
    known = before.users_;
  }
  const MutexLock lock(mutex_);
  for (auto& [name, user] : users_) {
    const auto old = known.find(name);
    if (old != known.end()) {
      user.requests = old->second.requests;
      user.bytes = old->second.bytes;
      if (old->second.remembered && old->second.hash == user.hash) {
        user.remembered = old->second.remembered;
        accepted_.emplace(*user.remembered, name);
      }
    }
  }
}

std::optional<Users::Identity> Users::checkAtOnce(std::string_view authorization) const {
  const auto text = textOf(authorization);
  if (!text) {
    return Identity();
  }
  const Sha256 digest = keyedDigest(*text);
  const MutexLock lock(mutex_);
  const auto found = accepted_.find(digest);
  if (found != accepted_.end()) {
    return found->second;
  }
  return hashes_.empty() ? std::optional<Identity>(Identity()) : std::nullopt;
}

Users::Identity Users::checkHash(std::string_view authorization) {
  if (auto identity = checkAtOnce(authorization)) {
    return *identity;
  }
  const std::string text = *textOf(authorization);
  const std::string name = text.substr(0, text.find(':'));
  const Sha256 nameDigest = keyedDigest(name);
  std::size_t choice = 0;
  std::memcpy(&choice, nameDigest.data(), sizeof choice);
  // A name without a hash has one of the others, always the same, so its checks take as long.
  std::string hash = hashes_[choice % hashes_.size()];
  bool known = false;
  {
    const MutexLock lock(mutex_);
    const auto user = users_.find(name);
    known = user != users_.end() && !user->second.hash.empty();
    hash = known ? user->second.hash : hash;
  }
  const auto given = hashOf(text.substr(std::min(name.size() + 1, text.size())), hash);
  const bool equal = given && given->size() == hash.size() &&
                     CRYPTO_memcmp(given->data(), hash.data(), hash.size()) == 0;
  if (!known || !equal) {
    return std::nullopt;
  }
  remember(name, keyedDigest(text));
  return name;
}

void Users::remember(const std::string& name, const Sha256& digest) {
  const MutexLock lock(mutex_);
  User& user = users_[name];
  if (user.remembered) {
    accepted_.erase(*user.remembered);
  }
  user.remembered = digest;
  accepted_.emplace(digest, name);
}

std::chrono::seconds Users::admit(const std::string& user,
                                  std::chrono::steady_clock::time_point now) {
  const MutexLock lock(mutex_);
  const auto found = users_.find(user);
  if (found == users_.end()) {
    return std::chrono::seconds::zero();
  }
  auto& [hash, remembered, requests, volume] = found->second;
  const auto delay = std::max(requests.delay(now, limits_.burst), volume.delay(now, limits_.burst));
  if (delay > Allowance::Seconds::zero()) {
    return std::chrono::ceil<std::chrono::seconds>(delay);
  }
  requests.take(1, limits_.requestsPerSecond, now);
  return std::chrono::seconds::zero();
}

void Users::charge(const std::string& user, std::uint64_t bytes,
                   std::chrono::steady_clock::time_point now) {
  const MutexLock lock(mutex_);
  const auto found = users_.find(user);
  if (found != users_.end()) {
    found->second.bytes.take(static_cast<double>(bytes), limits_.bytesPerSecond, now);
  }
}

}  // namespace qel::collector
