#pragma once

#include <string>
#include <vector>

/// The command line and the standard streams, in UTF-8 on every system.
namespace qel::tools {

/// The arguments of `main` without the program's name. Windows passes them to `main` in its code
/// page, which lacks most characters, so they are read from the system instead.
std::vector<std::string> utf8Arguments(int count, const char* const* values);

/// Sets the standard streams up for UTF-8. On Windows, no stream converts line ends, and the
/// console shows UTF-8 and understands escape sequences as long as the object exists. The console
/// gets its old settings back even if Ctrl-C ends the program. A process may have only one object.
class Utf8Streams {
 public:
  Utf8Streams();
  ~Utf8Streams();

  Utf8Streams(const Utf8Streams&) = delete;
  Utf8Streams& operator=(const Utf8Streams&) = delete;
};

}  // namespace qel::tools
