#pragma once

#include <string>
#include <string_view>

namespace qel::utilities {

/// The process's standard error. Failures to write are ignored. Thread-safe.
///
/// **Windows.** An object writes to what standard error was when the object was created, also after
/// the host has closed or replaced standard error. Otherwise it could write to the next file that
/// the host opens, because Windows and the C library reuse handles, descriptors and streams. A
/// program without a console may have no standard error. Then nothing is written.
class StandardError {
 public:
  StandardError() noexcept;
  StandardError(const StandardError&) = delete;
  StandardError& operator=(const StandardError&) = delete;
  // NOLINTNEXTLINE(performance-trivially-destructible): on Windows it closes the handle.
  ~StandardError();

  /// Writes the text, without the C library's stream. A stalled write would hold the stream's lock,
  /// and the exiting process would wait for that lock. Blocks until a reader takes the text.
  void write(std::string_view text) const;

  /// Writes the line and an end of line at once. Writes nothing if that would block, because nobody
  /// reads or the reader does not keep up. Windows does not report this, so there it may block.
  void writeLine(std::string line) const;

 private:
  /// Windows: a duplicate of the handle; null if there is no standard error. POSIX: not used.
  [[maybe_unused]] void* handle_ = nullptr;
};

}  // namespace qel::utilities
