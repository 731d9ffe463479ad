// An object of any texts parses strictly and reads back as it was built.

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>
#include <nlohmann/json.hpp>

#include "fuzz/Check.h"
#include "host/QelJson/JsonObject.h"

namespace qel::json {
namespace {

using Expected = nlohmann::ordered_json;

/// The text as it has to be read back, with what is no UTF-8 replaced.
std::string repaired(const std::string& text) {
  return Expected::parse(Expected(text).dump(-1, ' ', false, Expected::error_handler_t::replace));
}

/// An object, and what it has to read back as. Of a key that comes twice a reader keeps the last.
struct Made {
  JsonObject object;
  Expected expected = Expected::object();
};

Made madeOf(FuzzedDataProvider& input);

/// Each returns what the member that it adds has to read back as.
Expected addStringMap(FuzzedDataProvider& input, const std::string& key, JsonObject& object) {
  std::map<std::string, std::string> values;
  while (input.ConsumeBool()) {
    auto name = input.ConsumeRandomLengthString();
    values[std::move(name)] = input.ConsumeRandomLengthString();
  }
  object.addStringMap(key, values);
  auto expected = Expected::object();
  for (const auto& [name, value] : values) {
    expected.emplace(repaired(name), repaired(value));  // the first one stays
  }
  return expected;
}

Expected addStringVector(FuzzedDataProvider& input, const std::string& key, JsonObject& object) {
  std::vector<std::string> values;
  auto expected = Expected::array();
  while (input.ConsumeBool()) {
    expected.push_back(repaired(values.emplace_back(input.ConsumeRandomLengthString())));
  }
  object.addStringVector(key, values);
  return expected;
}

Expected addObject(FuzzedDataProvider& input, const std::string& key, JsonObject& object) {
  auto value = madeOf(input);
  object.addJsonObject(key, value.object);
  return std::move(value.expected);
}

Expected addObjectVector(FuzzedDataProvider& input, const std::string& key, JsonObject& object) {
  std::vector<JsonObject> values;
  auto expected = Expected::array();
  while (input.ConsumeBool()) {
    auto element = madeOf(input);
    values.push_back(std::move(element.object));
    expected.push_back(std::move(element.expected));
  }
  object.addJsonObjectVector(key, values);
  return expected;
}

Expected addScalar(FuzzedDataProvider& input, const std::string& key, JsonObject& object) {
  if (input.ConsumeBool()) {
    const bool value = input.ConsumeBool();
    object.addBool(key, value);
    return value;
  }
  const auto value = std::bit_cast<double>(input.ConsumeIntegral<std::uint64_t>());
  object.addDouble(key, value);
  return std::isfinite(value) ? Expected(value) : Expected();
}

Expected addString(FuzzedDataProvider& input, const std::string& key, JsonObject& object) {
  const auto value = input.ConsumeRandomLengthString();
  object.addString(key, value);
  return repaired(value);
}

/// Ends an object when the input says so or has ended.
Made madeOf(FuzzedDataProvider& input) {
  constexpr std::array adders{addScalar,       addStringMap, addStringVector,
                              addObjectVector, addObject,    addString};
  Made made;
  while (input.remaining_bytes() > 0) {
    const auto key = input.ConsumeRandomLengthString();
    const auto kind = input.ConsumeIntegralInRange<std::size_t>(0, adders.size());
    if (kind == 0) {
      break;
    }
    made.expected[repaired(key)] = adders.at(kind - 1)(input, key, made.object);
  }
  return made;
}

}  // namespace
}  // namespace qel::json

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using qel::fuzz::check;
  FuzzedDataProvider input(data, size);
  const auto [object, expected] = qel::json::madeOf(input);
  const std::string text = object.toString();
  const auto parsed = nlohmann::ordered_json::parse(text);
  // Unlike the parsed values their texts tell 1 from 1.0, and -0.0 from 0.0.
  check(parsed.dump() == expected.dump(), "an object reads back as it was built");
  check(text.find('\n') == std::string::npos, "an object is one line");
  return 0;
}
