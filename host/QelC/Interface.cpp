#include <algorithm>
#include <array>
#include <cfenv>
#include <new>
#include <string>
#include <string_view>

#include <nlohmann/json.hpp>

#include "host/QelC/CallError.h"
#include "host/QelC/Environment.h"
#include "host/QelC/Parameters.h"
#include "host/QelC/Recordings.h"
#include "host/QelC/Registry.h"
#include "host/QelC/Texts.h"
#include "host/QelC/qel_analytics.h"
#include "host/QelNotification/Notification.h"

namespace {

using namespace qel::c;
using nlohmann::json;

constexpr std::uint32_t mostDetails = 10'000;

/// The text of the last failure. Trivially destroyed, so that it is valid until the thread ends.
constinit thread_local std::array<char, 512> lastError{};

/// Keeps the text, without a character that is cut off at its end.
std::int32_t fail(std::int32_t status, std::string_view text) {
  auto size = std::min(text.size(), lastError.size() - 1);
  const auto continues = [&](std::size_t at) { return (text[at] & 0xC0) == 0x80; };
  while (size < text.size() && size > 0 && continues(size)) {
    --size;
  }
  *std::copy_n(text.begin(), size, lastError.begin()) = '\0';
  return status;
}

/// The default floating-point environment, for as long as the object exists. Some languages unmask
/// floating-point exceptions, which would end the process here.
class DefaultFloatingPoint {
 public:
  DefaultFloatingPoint() {
    std::fegetenv(&before_);
    std::fesetenv(FE_DFL_ENV);
  }
  DefaultFloatingPoint(const DefaultFloatingPoint&) = delete;
  DefaultFloatingPoint& operator=(const DefaultFloatingPoint&) = delete;
  ~DefaultFloatingPoint() { std::fesetenv(&before_); }

 private:
  std::fenv_t before_{};
};

/// Calls the function, and returns the status of its exception.
template <typename Function>
std::int32_t call(Function function) {
  const DefaultFloatingPoint floatingPoint;
  try {
    function();
    return QEL_ANALYTICS_OK;
  } catch (const CallError& failure) {
    return fail(failure.status(), failure.what());
  } catch (const qel::notification::NotificationError& failure) {
    return fail(QEL_ANALYTICS_INVALID_JSON, failure.what());
  } catch (const std::bad_alloc&) {
    return fail(QEL_ANALYTICS_OUT_OF_MEMORY, "out of memory");
  } catch (const std::exception& failure) {
    return fail(QEL_ANALYTICS_FAILED, failure.what());
  } catch (...) {
    return fail(QEL_ANALYTICS_FAILED, "an unknown exception");
  }
}

json detailsOf(const qel_analytics_detail* details, std::uint32_t count) {
  json object = json::object();
  if (details == nullptr && count > 0) {
    throw CallError(QEL_ANALYTICS_INVALID_ARGUMENT, "details is null");
  }
  if (count > mostDetails) {
    throw CallError(QEL_ANALYTICS_INVALID_ARGUMENT, "detail_count is more than 10000");
  }
  for (const auto* detail = details; detail != details + count; ++detail) {
    object[requiredText(detail->key, "the key of a detail")] =
        requiredText(detail->value, "the value of a detail");
  }
  return object;
}

void notify(qel_analytics_handle handle, const std::string& text) {
  Registry::instance().broadcast(handle, qel::notification::readNotification(text));
}

std::int32_t notifyOfApplication(qel_analytics_handle handle, const char* operation,
                                 const char* text) {
  return call([&] {
    notify(handle, json{{"notify", operation}, {"text", requiredText(text, "text")}}.dump());
  });
}

}  // namespace

std::int32_t qel_analytics_create(const qel_analytics_parameters* parameters,
                                  qel_analytics_handle* handle) {
  return call([&] {
    if (handle == nullptr) {
      throw CallError(QEL_ANALYTICS_INVALID_ARGUMENT, "handle is null");
    }
    *handle = 0;
    *handle = Registry::instance().create(readParameters(parameters));
  });
}

std::int32_t qel_analytics_release(qel_analytics_handle handle) {
  return call([&] { Registry::instance().end(handle, Registry::Ending::Send); });
}

std::int32_t qel_analytics_withdraw(qel_analytics_handle handle) {
  return call([&] { Registry::instance().end(handle, Registry::Ending::Remove); });
}

std::int32_t qel_analytics_remove_recordings(const char* directory) {
  return call([&] { removeAllRecordings(requiredText(directory, "directory")); });
}

std::int32_t qel_analytics_join(qel_analytics_handle handle) {
  return call([&] {
    Registry::instance().use(handle, [](Session& session) { session.waitUntilStored(); });
  });
}

std::int32_t qel_analytics_start_sending(qel_analytics_handle handle) {
  return call(
      [&] { Registry::instance().use(handle, [](Session& session) { session.startSending(); }); });
}

std::int32_t qel_analytics_stop_sending(qel_analytics_handle handle) {
  return call(
      [&] { Registry::instance().use(handle, [](Session& session) { session.stopSending(); }); });
}

std::int32_t qel_analytics_notify(qel_analytics_handle handle, const char* json) {
  return call([&] {
    if (json == nullptr) {
      throw CallError(QEL_ANALYTICS_INVALID_ARGUMENT, "json is null");
    }
    notify(handle, json);
  });
}

std::int32_t qel_analytics_general_event(qel_analytics_handle handle, const char* category,
                                         const char* subcategory, const char* event,
                                         const qel_analytics_detail* details,
                                         std::uint32_t detailCount) {
  return call([&] {
    notify(handle, json{{"notify", "onGeneralAction"},
                        {"category", requiredText(category, "category")},
                        {"subcategory", requiredText(subcategory, "subcategory")},
                        {"event", requiredText(event, "event")},
                        {"details", detailsOf(details, detailCount)}}
                       .dump());
  });
}

std::int32_t qel_analytics_command_started(qel_analytics_handle handle, const char* id,
                                           const char* text, std::uint32_t location,
                                           const qel_analytics_detail* details,
                                           std::uint32_t detailCount) {
  return call([&] {
    notify(handle, json{{"notify", "onCommandStarted"},
                        {"id", requiredText(id, "id")},
                        {"text", requiredText(text, "text")},
                        {"location", location},
                        {"details", detailsOf(details, detailCount)}}
                       .dump());
  });
}

std::int32_t qel_analytics_command_stopped(qel_analytics_handle handle, const char* id,
                                           const char* text, std::int32_t cancelled,
                                           const qel_analytics_detail* details,
                                           std::uint32_t detailCount) {
  return call([&] {
    notify(handle, json{{"notify", "onCommandStopped"},
                        {"id", requiredText(id, "id")},
                        {"text", requiredText(text, "text")},
                        {"cancelled", cancelled != 0},
                        {"details", detailsOf(details, detailCount)}}
                       .dump());
  });
}

std::int32_t qel_analytics_application_started(qel_analytics_handle handle, const char* text) {
  return notifyOfApplication(handle, "onApplicationStarted", text);
}

std::int32_t qel_analytics_application_stopped(qel_analytics_handle handle, const char* text) {
  return notifyOfApplication(handle, "onApplicationStopped", text);
}

std::int32_t qel_analytics_application_crashed(qel_analytics_handle handle, const char* text,
                                               std::int32_t code) {
  return call([&] {
    notify(handle, json{{"notify", "onApplicationCrashed"},
                        {"text", requiredText(text, "text")},
                        {"code", code}}
                       .dump());
  });
}

const char* qel_analytics_this_machine(const char* program, const char* version) {
  static thread_local std::string description;
  const auto status = call([&] {
    description =
        describeMachine(requiredText(program, "program"), requiredText(version, "version"));
  });
  return status == QEL_ANALYTICS_OK ? description.c_str() : nullptr;
}

const char* qel_analytics_last_error() { return lastError.data(); }

const char* qel_analytics_status_text(std::int32_t status) {
  static constexpr std::array<const char*, 12> texts{
      "success",
      "an argument is invalid",
      "the handle is invalid",
      "a JSON text is invalid",
      "this process already has a client",
      "a callback must not call this function",
      "another thread has not completed its notification",
      "recording has ended",
      "the operation failed",
      "out of memory",
      "the client has ended, but a callback runs",
      "records were lost",
  };
  const auto index = static_cast<std::uint32_t>(status);
  return index < texts.size() ? texts[index] : "an unknown status";
}

const char* qel_analytics_version() { return QEL_VERSION; }
