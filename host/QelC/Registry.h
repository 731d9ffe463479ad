#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "host/QelC/Session.h"
#include "host/QelC/qel_analytics.h"
#include "host/QelNotification/Notification.h"
#include "host/QelUtilities/Mutex.h"

namespace qel::c {

/// The process's client and its handle. All operations throw `CallError` if they cannot do what
/// they should, and pass on exceptions of the client.
///
/// **Threads.** Thread-safe. `control_` is locked while a client is created, joined, released or
/// starts to send. This can take long, so a broadcast never locks it: a callback that runs
/// meanwhile may broadcast. `mutex_` is locked only for a moment.
class Registry {
 public:
  /// What happens to rows that are not stored or sent when a client ends.
  enum class Ending { Send, Remove };

  /// The object is never destroyed, because other threads may use it while the process exits.
  static Registry& instance();

  qel_analytics_handle create(Parameters parameters);
  void end(qel_analytics_handle handle, Ending ending);
  /// Calls the function with the client.
  void use(qel_analytics_handle handle, const std::function<void(Session&)>& function);
  void broadcast(qel_analytics_handle handle, const notification::Broadcast& broadcast);

 private:
  using TimePoint = std::chrono::steady_clock::time_point;
  /// The values that the process keeps from its first client.
  struct Identity {
    std::string installationId;
    Guid sessionId;
  };

  Registry();

  std::unique_ptr<Session> open(Parameters& parameters, const std::string& environment)
      QEL_REQUIRES(control_);
  void identify(Parameters& parameters) QEL_REQUIRES(control_);
  void expectLive(qel_analytics_handle handle) const QEL_REQUIRES(mutex_);
  TimePoint beginEnd(qel_analytics_handle handle, Ending ending);
  void waitForBroadcast(TimePoint deadline) QEL_REQUIRES(control_);
  void destroySession(Ending ending, TimePoint deadline) QEL_REQUIRES(control_);

  utilities::Mutex control_;
  std::unique_ptr<Session> session_ QEL_GUARDED_BY(control_);
  std::optional<Identity> identity_ QEL_GUARDED_BY(control_);

  utilities::Mutex mutex_;
  utilities::Condition broadcastEnded_;
  qel_analytics_handle handle_ QEL_GUARDED_BY(mutex_);    ///< the latest handle
  const Session* live_ QEL_GUARDED_BY(mutex_) = nullptr;  ///< its client; null once its end begins
  bool isBroadcasting_ QEL_GUARDED_BY(mutex_) = false;
};

}  // namespace qel::c
