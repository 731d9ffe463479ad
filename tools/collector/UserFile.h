#pragma once

#include <filesystem>
#include <istream>
#include <string>
#include <vector>

namespace qel::collector {

/// A line of a users file.
struct UserLine {
  std::string user;
  std::string secret;
};

enum class Secrets { PlainOrHashed, Plain };

/// Reads the lines as `Users` describes. `name` is the file's name in messages.
std::vector<UserLine> readUsers(std::istream& lines, const std::string& name,
                                Secrets secrets = Secrets::PlainOrHashed);

/// The same from a file. Logs a warning if any user of the machine may open the file.
std::vector<UserLine> readUsers(const std::filesystem::path& file,
                                Secrets secrets = Secrets::PlainOrHashed);

}  // namespace qel::collector
