#pragma once

#include <string>
#include <string_view>

namespace qel::collector {

/// The text as a literal of ClickHouse's SQL, with its quotation marks. No text ends the literal.
std::string sqlLiteral(std::string_view text);

/// The text as a part of a URL.
std::string encodedForUrl(std::string_view text);

/// What ClickHouse reports, in one short line for the log. Leaves out what it quotes from rows.
std::string shortenedError(std::string_view report);

}  // namespace qel::collector
