#include <array>
#include <string>
#include <string_view>
#include <utility>

#include "benchmarks/Timing.h"
#include "benchmarks/Workload.h"

namespace qel::benchmarks {
namespace {

void render(benchmark::State& state) {
  identifyProcess();
  const auto item = makeItem(0);
  for (auto _ : state) {
    benchmark::DoNotOptimize(item->toJson());
  }
}
BENCHMARK(render)->Name("render/ours")->MinTime(0.2);

void appendText(std::string& out, std::string_view text) {
  constexpr std::string_view digits = "0123456789abcdef";
  out += '"';
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (static_cast<unsigned char>(c) < ' ') {
      out += "\\u00";
      out += digits[static_cast<unsigned char>(c) >> 4];
      out += digits[c & 0xF];
    } else {
      out += c;
    }
  }
  out += '"';
}

struct Texts {
  /// The text before a member's value, and the value.
  std::array<std::pair<std::string_view, std::string>, 6> members;
  Details details;
};

/// Requires that the keys need no escaping. All values are strings.
std::string renderByHand(const Texts& texts) {
  std::string out;
  out.reserve(512);
  for (const auto& [key, value] : texts.members) {
    out += key;
    appendText(out, value);
  }
  out += R"(, "Details": {)";
  bool isFirst = true;
  for (const auto& [key, value] : texts.details) {
    if (!isFirst) {
      out += ", ";
    }
    isFirst = false;
    appendText(out, key);
    out += ": ";
    appendText(out, value);
  }
  out += "}}";
  return out;
}

void renderLimit(benchmark::State& state) {
  identifyProcess();
  const auto item = makeItem(0);
  const Texts texts{{{{R"({"Category": )", item->getCategory()},
                      {R"(, "Subcategory": )", item->getSubCategory()},
                      {R"(, "Event": )", item->getEvent()},
                      {R"(, "InstallationId": )", item->getInstallationId()},
                      {R"(, "SessionId": )", item->getSessionId().toString(false)},
                      {R"(, "Timestamp": )", item->getDateTimeAsString()}}},
                    item->getDetails()};
  expect(state, renderByHand(texts) == item->toJson(), "the texts differ");
  for (auto _ : state) {
    benchmark::DoNotOptimize(renderByHand(texts));
  }
}
BENCHMARK(renderLimit)->Name("render/limit")->MinTime(0.2);

}  // namespace
}  // namespace qel::benchmarks
