// Whatever texts an object is built of, it parses strictly and reads back.

#include <array>
#include <bit>
#include <cmath>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <fuzzer/FuzzedDataProvider.h>
#include <nlohmann/json.hpp>

#include "fuzz/Check.h"
#include "host/QelJson/JsonObject.h"

namespace qel::json {
namespace {

using Expected = nlohmann::ordered_json;

/// What well-formed UTF-8 may begin with (the Unicode Standard, table 3-7).
struct Lead {
  unsigned char lowest;
  unsigned char highest;
  unsigned char lowestSecond;
  unsigned char highestSecond;
  std::size_t length;
};

constexpr std::array leads{
    Lead{0x00, 0x7F, 0x00, 0x00, 1}, Lead{0xC2, 0xDF, 0x80, 0xBF, 2},
    Lead{0xE0, 0xE0, 0xA0, 0xBF, 3}, Lead{0xE1, 0xEC, 0x80, 0xBF, 3},
    Lead{0xED, 0xED, 0x80, 0x9F, 3}, Lead{0xEE, 0xEF, 0x80, 0xBF, 3},
    Lead{0xF0, 0xF0, 0x90, 0xBF, 4}, Lead{0xF1, 0xF3, 0x80, 0xBF, 4},
    Lead{0xF4, 0xF4, 0x80, 0x8F, 4},
};

bool isWithin(char byte, unsigned char lowest, unsigned char highest) {
  const auto number = static_cast<unsigned char>(byte);
  return lowest <= number && number <= highest;
}

struct Part {
  std::size_t length;
  bool isCharacter;
};

/// The character that a text which is not empty begins with, or the part that is none.
Part firstPart(std::string_view text) {
  for (const Lead& lead : leads) {
    if (!isWithin(text[0], lead.lowest, lead.highest)) {
      continue;
    }
    std::size_t length = 1;
    while (length < lead.length && length < text.size() &&
           (length == 1 ? isWithin(text[1], lead.lowestSecond, lead.highestSecond)
                        : isWithin(text[length], 0x80, 0xBF))) {
      ++length;
    }
    return {length, length == lead.length};
  }
  return {1, false};
}

std::string repaired(std::string_view text) {
  std::string result;
  while (!text.empty()) {
    const auto [length, isCharacter] = firstPart(text);
    result += isCharacter ? text.substr(0, length) : "\uFFFD";
    text.remove_prefix(length);
  }
  return result;
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
    expected[repaired(name)] = repaired(value);
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
