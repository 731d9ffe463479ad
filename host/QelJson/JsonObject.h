#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qel::json {

/// Builds the text of one JSON object (RFC 8259), member by member.
///
/// Members keep the order of their addition, and a key added twice stands twice. The text is one
/// line:
/// `{"Key": "value", "Other": 1}`. The blanks belong to it: a session's records are found by
/// searching the stored texts for `"SessionId": "` and the id. Whatever bytes the texts hold, the
/// result parses in a strict parser: valid UTF-8 passes through, each maximal invalid part becomes
/// U+FFFD, control characters (embedded NUL included), quotes and backslashes are escaped. One
/// thread at a time.
class JsonObject {
 public:
  /// Without members.
  JsonObject();

  /// Appends a member and returns this object. Nothing that is given is referred to afterwards.
  /// @{
  JsonObject& addString(std::string_view key, std::string_view value);
  JsonObject& addBool(std::string_view key, bool value);
  /// A short text that reads back as the same number, with a decimal point or an exponent ("96.0",
  /// "1e+300"); null for infinities and NaN, which JSON cannot say.
  JsonObject& addDouble(std::string_view key, double value);
  /// A nested object with one string member per entry, in key order. Of keys that differ in invalid
  /// UTF-8 alone, and so are written alike, the first one stays.
  JsonObject& addStringMap(std::string_view key, const std::map<std::string, std::string>& values);
  JsonObject& addStringVector(std::string_view key, const std::vector<std::string>& values);
  JsonObject& addJsonObject(std::string_view key, const JsonObject& value);
  JsonObject& addJsonObjectVector(std::string_view key, const std::vector<JsonObject>& values);
  /// @}

  /// The text so far; members may be added afterwards.
  std::string toString() const&;
  /// Hands the text over instead of copying it; the object must not be used any more.
  std::string toString() &&;

 private:
  void appendPlainMember(std::string_view key, std::string_view value);
  void appendKey(std::string_view key);

  std::string text_;  ///< everything but the closing brace
};

}  // namespace qel::json
