#pragma once

#include <memory>

#include <spdlog/sinks/sink.h>

namespace qel::log {

/// A sink that writes to standard error, without the C library's stream. A stalled write would hold
/// the stream's lock, and the exiting process would wait for that lock. The log's thread uses it.
///
/// On Windows the sink keeps writing to what standard error is now, even if the host closes or
/// replaces standard error later. Elsewhere it writes to descriptor 2.
std::shared_ptr<spdlog::sinks::sink> makeStandardErrorSink();

}  // namespace qel::log
