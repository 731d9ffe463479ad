#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace qel::json {

/// Builds the text of one JSON object (RFC 8259), member by member.
///
/// **Order.** Members appear in the order in which they were added. A key that is added twice
/// appears twice.
///
/// **Format.** The text is one line: `{"Key": "value", "Other": 1}`. The spaces are part of the
/// format. To find a session's records, readers search the JSON texts for `"SessionId": "` and the
/// id.
///
/// **Strings.** A strict parser accepts the result, whatever bytes the strings contain. Valid UTF-8
/// is kept. Each maximal invalid part becomes U+FFFD. Control characters (including NUL), quotes
/// and backslashes are escaped.
///
/// **Threads.** Only one thread at a time may use an object.
class JsonObject {
 public:
  /// An object without members.
  JsonObject();

  /// Appends a member and returns this object. The arguments are copied.
  /// @{
  JsonObject& addString(std::string_view key, std::string_view value);
  JsonObject& addBool(std::string_view key, bool value);
  /// Adds a short text that parses to the same number and has a decimal point or an exponent
  /// ("96.0", "1e+300"). Infinities and NaN become null, because JSON cannot represent them.
  JsonObject& addDouble(std::string_view key, double value);
  /// Adds a nested object with one string member per entry, in key order. Keys that differ only in
  /// invalid UTF-8 would be written alike, so only the first of them is added.
  JsonObject& addStringMap(std::string_view key, const std::map<std::string, std::string>& values);
  JsonObject& addStringVector(std::string_view key, const std::vector<std::string>& values);
  JsonObject& addJsonObject(std::string_view key, const JsonObject& value);
  JsonObject& addJsonObjectVector(std::string_view key, const std::vector<JsonObject>& values);
  /// @}

  /// The text with the members added so far. More members may be added afterwards.
  std::string toString() const&;
  /// Moves the text out of the object instead of copying it. The object must not be used
  /// afterwards.
  std::string toString() &&;

 private:
  void appendPlainMember(std::string_view key, std::string_view value);
  void appendKey(std::string_view key);

  std::string text_;  ///< the text without the closing brace
};

}  // namespace qel::json
