#include "host/QelLog/StandardErrorSink.h"

#include <algorithm>
#include <string_view>

#include <spdlog/details/null_mutex.h>
#include <spdlog/sinks/base_sink.h>
#include <windows.h>

namespace qel::log {
namespace {

/// Owns a duplicate of the handle of standard error. When the host closes standard error, the next
/// file that it opens may get the same handle and the same descriptor. Writing to these would
/// change the host's file.
class StandardErrorSink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
 public:
  StandardErrorSink() {
    // Fails if there is no standard error, as in most programs with windows.
    DuplicateHandle(GetCurrentProcess(), GetStdHandle(STD_ERROR_HANDLE), GetCurrentProcess(),
                    &handle_, 0, FALSE, DUPLICATE_SAME_ACCESS);
  }
  ~StandardErrorSink() override {
    if (handle_ != nullptr) {
      CloseHandle(handle_);
    }
  }
  StandardErrorSink(const StandardErrorSink&) = delete;
  StandardErrorSink& operator=(const StandardErrorSink&) = delete;

 private:
  void sink_it_(const spdlog::details::log_msg& message) override {
    if (handle_ == nullptr) {
      return;
    }
    spdlog::memory_buf_t line;
    formatter_->format(message, line);
    for (std::string_view rest(line.data(), line.size()); !rest.empty();) {
      constexpr std::size_t mostAtOnce = 65'536;
      DWORD count = 0;
      if (WriteFile(handle_, rest.data(), static_cast<DWORD>(std::min(rest.size(), mostAtOnce)),
                    &count, nullptr) == 0 ||
          count == 0) {
        return;
      }
      rest.remove_prefix(count);
    }
  }
  void flush_() override {}

  HANDLE handle_ = nullptr;
};

}  // namespace

std::shared_ptr<spdlog::sinks::sink> makeStandardErrorSink() {
  return std::make_shared<StandardErrorSink>();
}

}  // namespace qel::log
