// Checks that a strict parser accepts an object with any strings and numbers and reads back the
// values that were added.

#include <bit>
#include <cmath>

#include <fuzzer/FuzzedDataProvider.h>
#include <nlohmann/json.hpp>

#include "fuzz/Check.h"
#include "host/QelJson/JsonObject.h"

namespace qel::json {

using Expected = nlohmann::ordered_json;

/// The text that a reader must get, with invalid UTF-8 replaced.
std::string repaired(const std::string& text) {
  return Expected::parse(Expected(text).dump(-1, ' ', false, Expected::error_handler_t::replace));
}

/// Adds a member to `object` and returns the value that a reader must get.
Expected addMember(FuzzedDataProvider& input, const std::string& key, JsonObject& object) {
  switch (input.ConsumeIntegralInRange(0, 2)) {
    case 0: {
      const auto value = input.ConsumeRandomLengthString();
      object.addString(key, value);
      return repaired(value);
    }
    case 1: {
      if (input.ConsumeBool()) {
        object.addBool(key, true);
        return true;
      }
      const auto value = std::bit_cast<double>(input.ConsumeIntegral<std::uint64_t>());
      object.addDouble(key, value);
      return std::isfinite(value) ? Expected(value) : Expected();
    }
    default: {
      std::map<std::string, std::string> values;
      while (input.ConsumeBool()) {
        auto name = input.ConsumeRandomLengthString();
        values[std::move(name)] = input.ConsumeRandomLengthString();
      }
      object.addStringMap(key, values);
      auto expected = Expected::object();
      for (const auto& [name, value] : values) {
        expected.emplace(repaired(name), repaired(value));  // the first value is kept
      }
      return expected;
    }
  }
}

}  // namespace qel::json

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qel::json;
  using qel::fuzz::check;
  FuzzedDataProvider input(data, size);
  JsonObject object;
  auto expected = Expected::object();
  while (input.remaining_bytes() > 0) {
    const auto key = input.ConsumeRandomLengthString();
    expected[repaired(key)] = addMember(input, key, object);  // a reader keeps the last value
  }
  const std::string text = object.toString();
  // The serialized texts are compared because, unlike parsed values, they distinguish 1 from 1.0,
  // and -0.0 from 0.0.
  check(Expected::parse(text).dump() == expected.dump(), "an object reads back as it was built");
  check(text.find('\n') == std::string::npos, "an object is one line");
  return 0;
}
