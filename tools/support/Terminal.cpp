#include "tools/support/Terminal.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iostream>
#include <utility>

#include "tools/support/TerminalDevice.h"

namespace qel::support {
namespace {

std::string environment(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? "" : value;
}

std::optional<std::size_t> widthOf(Stream stream) {
  const int requested = std::atoi(environment("COLUMNS").c_str());
  const auto columns = requested > 0 ? static_cast<std::size_t>(requested) : terminalWidth(stream);
  return columns > 0 ? std::optional(columns) : std::nullopt;
}

}  // namespace

Terminal Terminal::ofStandardOutput() {
  return {widthOf(Stream::Output),
          environment("NO_COLOR").empty() && understandsEscapes(Stream::Output), report::Zone::Utc};
}

std::string Terminal::styled(const std::string& text, Style style) const {
  constexpr std::array<const char*, 5> codes{"0", "1", "2", "32", "1;31"};  // by style
  if (!colours || style == Style::Plain) {
    return text;
  }
  return "\033[" + std::string(codes[static_cast<std::size_t>(style)]) + 'm' + text + "\033[0m";
}

ProgressBar::ProgressBar(std::string label)
    : label_(std::move(label)), onTerminal_(understandsEscapes(Stream::Errors)) {}

ProgressBar::~ProgressBar() {
  if (shownPercent_ >= 0) {
    std::cerr << "\r\033[K" << std::flush;
  }
}

void ProgressBar::show(double part) {
  constexpr auto moment = std::chrono::milliseconds(300);
  const int percent = static_cast<int>(std::clamp(part, 0.0, 1.0) * 100);
  if (!onTerminal_ || percent == shownPercent_ || Clock::now() - start_ < moment) {
    return;
  }
  shownPercent_ = percent;
  const auto width = std::min<std::size_t>(widthOf(Stream::Errors).value_or(80), 100);
  const std::string number = ' ' + std::to_string(percent) + " %";
  const auto taken = label_.size() + number.size() + 4;
  const std::size_t room = width > taken ? width - taken : 0;
  const std::size_t filled = room * static_cast<std::size_t>(percent) / 100;
  std::cerr << '\r' << label_ << " [" << std::string(filled, '#') << std::string(room - filled, '.')
            << ']' << number << std::flush;
}

bool canAsk() { return isTerminal(Stream::Input) && isTerminal(Stream::Errors); }

bool confirmed(const std::string& question) {
  std::cerr << question << " [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  if (answer.ends_with('\r')) {
    answer.pop_back();
  }
  return answer == "y" || answer == "Y" || answer == "yes";
}

}  // namespace qel::support
