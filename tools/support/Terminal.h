#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace qel::support {

enum class Style { Plain, Heading, Faint, Good, Bad };

/// What standard output leads to.
struct Terminal {
  /// Asks the environment: COLUMNS sets the width anywhere, NO_COLOR keeps colours away.
  static Terminal ofStandardOutput();

  std::string styled(const std::string& text, Style style) const;

  std::optional<std::size_t> width;  ///< none: lines may be of any length
  bool colours = false;
};

/// A bar on standard error for what takes longer than a moment; none where that is no terminal.
class ProgressBar {
 public:
  explicit ProgressBar(std::string label);
  ~ProgressBar();

  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// `part` of the work is done, from 0 to 1.
  void show(double part);

 private:
  using Clock = std::chrono::steady_clock;

  const std::string label_;
  const bool onTerminal_;
  const Clock::time_point start_ = Clock::now();
  int shownPercent_ = -1;
};

/// Whether there is somebody at a terminal to ask.
bool canAsk();
/// Asks on the terminal for a "yes".
bool confirmed(const std::string& question);

}  // namespace qel::support
