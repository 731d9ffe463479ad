#include "host/QelLog/StandardErrorSink.h"

#include <cerrno>
#include <string_view>

#include <poll.h>
#include <spdlog/details/null_mutex.h>
#include <spdlog/sinks/base_sink.h>
#include <unistd.h>

namespace qel::log {
namespace {

class StandardErrorSink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
  void sink_it_(const spdlog::details::log_msg& message) override {
    spdlog::memory_buf_t line;
    formatter_->format(message, line);
    for (std::string_view rest(line.data(), line.size()); !rest.empty();) {
      const auto count = ::write(STDERR_FILENO, rest.data(), rest.size());
      if (count >= 0) {
        rest.remove_prefix(static_cast<std::size_t>(count));
      } else if (errno == EAGAIN) {
        pollfd writable{.fd = STDERR_FILENO, .events = POLLOUT, .revents = 0};
        ::poll(&writable, 1, -1);
      } else if (errno != EINTR) {
        return;
      }
    }
  }
  void flush_() override {}
};

}  // namespace

std::shared_ptr<spdlog::sinks::sink> makeStandardErrorSink() {
  return std::make_shared<StandardErrorSink>();
}

}  // namespace qel::log
