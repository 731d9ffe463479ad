#pragma once

#include <cstddef>

/// The system's facts about the standard streams.
namespace qel::support {

enum class Stream { Input, Output, Errors };

bool isTerminal(Stream stream);

/// The width of the terminal; 0 if the stream is no terminal.
std::size_t terminalWidth(Stream stream);

/// Whether the stream is a terminal that understands escape sequences.
bool understandsEscapes(Stream stream);

}  // namespace qel::support
