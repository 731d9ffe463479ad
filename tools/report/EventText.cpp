#include "tools/report/EventText.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>

#include <nlohmann/json.hpp>
#include <utf8proc.h>

#include "tools/report/CrashCode.h"
#include "tools/report/DisplayText.h"

namespace qel::report {
namespace {

using records::Event;

std::optional<std::int64_t> numberOf(std::string_view text) {
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  return whole && number >= 0 ? std::optional(number) : std::nullopt;
}

/// An amount of memory, of which the client records kilobytes of 1024 bytes.
std::string amountOf(std::int64_t kilobytes) {
  constexpr std::int64_t unit = 1024;
  return kilobytes < unit * unit
             ? grouped((kilobytes + unit / 2) / unit) + " MB"
             : oneDecimal(static_cast<double>(kilobytes) / (unit * unit)) + " GB";
}

/// The text of a report on memory; `std::nullopt` if the event is none.
std::optional<EventText> memoryText(const Event& event) {
  const auto low = numberOf(event.detail("Min"));
  const auto high = numberOf(event.detail("Max"));
  const bool isProgram = event.subcategory == "Application";
  if (event.category != "MemoryUsage" || !low || !high ||
      (!isProgram && event.subcategory != "Total")) {
    return std::nullopt;
  }
  const auto range = amountOf(*low) == amountOf(*high) ? amountOf(*low)
                                                       : amountOf(*low) + " to " + amountOf(*high);
  const auto readings = std::count_if(event.details.begin(), event.details.end(),
                                      [](const auto& detail) { return numberOf(detail.first); });
  return EventText{titleOf(event),
                   (isProgram ? "program " : "machine ") + range +
                       (readings > 0 ? ", " + std::to_string(readings) +
                                           (readings == 1 ? " reading" : " readings")
                                     : "")};
}

/// The details, with the crash code as people quote it. The code 0 of other events is left out.
std::string applicationDetails(Event event) {
  constexpr std::string_view codeName = "Exception Code";
  const auto code = crashCodeText(event.detail(codeName));
  if (code.empty()) {
    std::erase_if(event.details, [&](const auto& detail) { return detail.first == codeName; });
    return detailsOf(event);
  }
  return detailsOf(event) + "; " + code;
}

/// The text of any event.
EventText plainText(const Event& event) {
  const auto title = titleOf(event);
  const bool isMachine = event.category == records::environmentCategory && title.empty();
  return {isMachine ? "Machine" : title,
          event.category == "Application" ? applicationDetails(event) : detailsOf(event)};
}

/// The text with every letter in the form in which upper and lower case are equal.
std::string folded(const std::string& text) {
  utf8proc_uint8_t* result = nullptr;
  const auto length = utf8proc_map(
      reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
      static_cast<utf8proc_ssize_t>(text.size()), &result,
      static_cast<utf8proc_option_t>(UTF8PROC_STABLE | UTF8PROC_COMPOSE | UTF8PROC_CASEFOLD));
  const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(result, std::free);
  if (length < 0) {
    return text;  // It is not UTF-8.
  }
  return {reinterpret_cast<const char*>(result), static_cast<std::size_t>(length)};
}

void appendTexts(std::string& texts, const nlohmann::json& value) {
  if (value.is_structured()) {
    for (const auto& part : value) {
      appendTexts(texts, part);
    }
  } else {
    texts += value.is_string() ? value.get<std::string>() : value.dump();
    texts += '\n';
  }
}

}  // namespace

EventText textOf(const Event& event) {
  const auto memory = memoryText(event);
  auto text = memory ? *memory : plainText(event);
  if (event.count > 1) {
    text.what += " (" + grouped(event.count) + " times)";
  }
  return text;
}

TextSearch::TextSearch(const std::string& text) : folded_(folded(text)) {}

bool TextSearch::finds(const Event& event) const {
  if (folded_.empty()) {
    return true;
  }
  const auto shown = textOf(event);
  std::string texts =
      event.category + '\n' + shown.what + '\n' + shown.details + '\n' + detailsOf(event) + '\n';
  appendTexts(texts, nlohmann::json::parse(event.text));
  return folded(texts).find(folded_) != std::string::npos;
}

}  // namespace qel::report
