#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qel::json {

/// Builds the text of one JSON object (RFC 8259), member by member.
///
/// **Order.** Members keep the order of their addition. A key that is added twice occurs twice.
///
/// **Format.** One line: `{"Key": "value", "Other": 1}`. The blanks are part of the format, since
/// readers find a session's records by searching the texts for `"SessionId": "` and the id.
///
/// **Texts.** The result parses in a strict parser, whatever bytes the texts have. Valid UTF-8
/// stays. Each maximal invalid part becomes U+FFFD. Control characters, also NUL, quotes and
/// backslashes are escaped.
///
/// **Threads.** One thread at a time.
class JsonObject {
 public:
  /// An object without members.
  JsonObject();

  /// Appends a member and returns this object. The arguments are copied.
  /// @{
  JsonObject& addString(std::string_view key, std::string_view value);
  JsonObject& addBool(std::string_view key, bool value);
  /// A short text that reads back as the same number, with a decimal point or an exponent ("96.0",
  /// "1e+300"). Infinities and NaN, which JSON does not have, become null.
  JsonObject& addDouble(std::string_view key, double value);
  /// A nested object with one string member per entry, in key order. Keys that differ only in
  /// invalid UTF-8 are written alike; only the first of them is added.
  JsonObject& addStringMap(std::string_view key, const std::map<std::string, std::string>& values);
  JsonObject& addStringVector(std::string_view key, const std::vector<std::string>& values);
  JsonObject& addJsonObject(std::string_view key, const JsonObject& value);
  JsonObject& addJsonObjectVector(std::string_view key, const std::vector<JsonObject>& values);
  /// @}

  /// The text so far; members may be added afterwards.
  std::string toString() const&;
  /// Moves the text out instead of copying it. The object must not be used afterwards.
  std::string toString() &&;

 private:
  void appendPlainMember(std::string_view key, std::string_view value);
  void appendKey(std::string_view key);

  std::string text_;  ///< everything except the closing brace
};

}  // namespace qel::json
