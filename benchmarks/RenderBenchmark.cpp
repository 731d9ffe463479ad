#include <string>
#include <string_view>

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
  std::string category;
  std::string subCategory;
  std::string event;
  std::string installationId;
  std::string sessionId;
  std::string timestamp;
  Details details;
};

/// Keys are known to need no escaping; all values are texts already.
std::string renderByHand(const Texts& texts) {
  std::string out;
  out.reserve(512);
  out += "{\"Category\": ";
  appendText(out, texts.category);
  out += ", \"Subcategory\": ";
  appendText(out, texts.subCategory);
  out += ", \"Event\": ";
  appendText(out, texts.event);
  out += ", \"InstallationId\": ";
  appendText(out, texts.installationId);
  out += ", \"SessionId\": ";
  appendText(out, texts.sessionId);
  out += ", \"Timestamp\": ";
  appendText(out, texts.timestamp);
  out += ", \"Details\": {";
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
  const Texts texts{item->getCategory(),
                    item->getSubCategory(),
                    item->getEvent(),
                    item->getInstallationId(),
                    item->getSessionId().toString(false),
                    item->getDateTimeAsString(),
                    item->getDetails()};
  if (renderByHand(texts) != item->toJson()) {
    state.SkipWithError("the texts differ");
  }
  for (auto _ : state) {
    benchmark::DoNotOptimize(renderByHand(texts));
  }
}
BENCHMARK(renderLimit)->Name("render/limit")->MinTime(0.2);

}  // namespace
}  // namespace qel::benchmarks
