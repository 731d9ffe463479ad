// Whatever texts an object is built of, it parses strictly and reads back.

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

void addStringMap(FuzzedDataProvider& input, const std::string& key, Made& made) {
  std::map<std::string, std::string> values;
  while (input.ConsumeBool()) {
    auto name = input.ConsumeRandomLengthString();
    values[std::move(name)] = input.ConsumeRandomLengthString();
  }
  made.object.addStringMap(key, values);
  auto expected = Expected::object();
  for (const auto& [name, value] : values) {
    expected.emplace(repaired(name), repaired(value));  // the first one stays
  }
  made.expected[repaired(key)] = std::move(expected);
}

void addStringVector(FuzzedDataProvider& input, const std::string& key, Made& made) {
  std::vector<std::string> values;
  auto expected = Expected::array();
  while (input.ConsumeBool()) {
    values.push_back(input.ConsumeRandomLengthString());
    expected.push_back(repaired(values.back()));
  }
  made.object.addStringVector(key, values);
  made.expected[repaired(key)] = std::move(expected);
}

void addObjectVector(FuzzedDataProvider& input, const std::string& key, Made& made) {
  std::vector<JsonObject> values;
  auto expected = Expected::array();
  while (input.ConsumeBool()) {
    auto element = madeOf(input);
    values.push_back(std::move(element.object));
    expected.push_back(std::move(element.expected));
  }
  made.object.addJsonObjectVector(key, values);
  made.expected[repaired(key)] = std::move(expected);
}

void addScalar(FuzzedDataProvider& input, const std::string& key, Made& made) {
  if (input.ConsumeBool()) {
    const bool value = input.ConsumeBool();
    made.object.addBool(key, value);
    made.expected[repaired(key)] = value;
    return;
  }
  const auto value = std::bit_cast<double>(input.ConsumeIntegral<std::uint64_t>());
  made.object.addDouble(key, value);
  made.expected[repaired(key)] = std::isfinite(value) ? Expected(value) : Expected();
}

/// Ends an object when the input says so or has ended.
Made madeOf(FuzzedDataProvider& input) {
  Made made;
  while (input.remaining_bytes() > 0) {
    const auto key = input.ConsumeRandomLengthString();
    switch (input.ConsumeIntegralInRange(0, 6)) {
      case 0:
        return made;
      case 1:
        addScalar(input, key, made);
        break;
      case 2:
        addStringMap(input, key, made);
        break;
      case 3:
        addStringVector(input, key, made);
        break;
      case 4:
        addObjectVector(input, key, made);
        break;
      case 5: {
        auto [object, expected] = madeOf(input);
        made.object.addJsonObject(key, object);
        made.expected[repaired(key)] = std::move(expected);
        break;
      }
      default: {
        const auto value = input.ConsumeRandomLengthString();
        made.object.addString(key, value);
        made.expected[repaired(key)] = repaired(value);
      }
    }
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
