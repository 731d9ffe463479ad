#pragma once

#include <string>
#include <string_view>

/// The process's standard error. Failures to write are ignored. Thread-safe.
///
/// **Windows.** The text goes to what standard error was when this library was loaded, before
/// `main` in a linked program. It still goes there after the host has closed or replaced standard
/// error. Otherwise it could go to the next file that the host opens, because Windows and the C
/// library reuse handles, descriptors and streams. A program without a console may have no standard
/// error. Then nothing is written.
namespace qel::utilities {

/// Writes the text, without the C library's stream. A stalled write would hold the stream's lock,
/// and the exiting process would wait for that lock. Blocks until a reader takes the text.
void writeToStandardError(std::string_view text);

/// Writes the line and an end of line at once. Writes nothing if that would block, because nobody
/// reads or the reader does not keep up. Windows does not report this, so there it may block.
void writeLineToStandardError(std::string line);

}  // namespace qel::utilities
