#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace qel::benchmarks {

/// Packages of realistic rows, about 300 bytes a row. A package is rendered once. Each use of it
/// only replaces the installation, the session and the day, so that it costs little time.
class PackageTemplates {
 public:
  /// The days continue after those of `earlierRows` rows that other programs have made.
  PackageTemplates(std::size_t rows, std::size_t earlierRows);

  /// The rows of one package.
  const std::size_t rows;

 private:
  friend class Session;

  struct Template {
    std::string body;
    std::vector<std::size_t> identities;  ///< where each row has its installation, session and day
  };

  std::vector<Template> templates_;
  mutable std::size_t begunRows_;  ///< of all sessions, and the earlier rows
};

/// Makes the packages of one client. Changes the session after about two hundred rows. No row is
/// made twice, and all rows of a package belong to one session. Later sessions belong to later
/// days, because clients send their rows within minutes.
class Session {
 public:
  Session(const PackageTemplates& templates, std::uint64_t seed);

  /// Appends the next package to `text`. Returns its size.
  std::size_t nextSize() const;
  void appendNext(std::string& text);

 private:
  void begin();

  const PackageTemplates& templates_;
  std::mt19937_64 random_;
  std::string identity_;
  std::size_t next_ = 0;
};

}  // namespace qel::benchmarks
