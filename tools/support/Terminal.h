#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include "tools/report/DisplayTime.h"

namespace qel::support {

/// `Terminal::styled` lists the terminal codes in this order.
enum class Style { Plain, Heading, Faint, Good, Bad };

/// How results are printed on standard output.
struct Terminal {
  /// Also reads the environment: COLUMNS sets the width, and NO_COLOR switches colours off.
  static Terminal ofStandardOutput();

  std::string styled(const std::string& text, Style style) const;

  std::optional<std::size_t> width;  ///< empty: lines may have any length
  bool colours = false;
  report::Zone zone = report::Zone::Utc;
};

/// A progress bar on standard error. It appears only on a terminal with escape sequences, and only
/// if the work takes longer than 0.3 s.
class ProgressBar {
 public:
  explicit ProgressBar(std::string label);
  ~ProgressBar();

  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// Shows that `part` of the work is done, from 0 to 1.
  void show(double part);

 private:
  using Clock = std::chrono::steady_clock;

  const std::string label_;
  const bool onTerminal_;
  const Clock::time_point start_ = Clock::now();
  int shownPercent_ = -1;
};

/// Whether standard input and standard error are terminals, so that a question can be answered.
bool canAsk();
/// Asks the question on the terminal. Returns true if the answer is "y" or "yes".
bool confirmed(const std::string& question);

}  // namespace qel::support
