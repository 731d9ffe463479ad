#pragma once

#include <atomic>
#include <chrono>

namespace qel::utilities {

/// A thread's patience: how long the thread may wait for resources that others use, such as a
/// database file. The limit applies to the sum of all waits while the object exists.
///
/// Another thread may end a worker's patience early, at a stop time. The worker's waits and its
/// HTTPS exchange then end, and its running SQL statement is interrupted, which means that it fails
/// and is rolled back. None of this is logged as a failure of the database.
///
/// A thread without an object never waits, so a worker must declare its patience when it starts. A
/// nested object can only shorten the remaining time of the outer object. Objects must be destroyed
/// in the reverse order of their construction, on the thread that created them.
class Patience {
 public:
  /// The duration of a wait.
  using Duration = std::chrono::steady_clock::duration;

  /// When a worker must stop. Set by another thread; `neverStop` until then.
  using StopTime = std::atomic<std::chrono::steady_clock::time_point>;
  /// The stop time of a thread that nothing stops.
  static constexpr auto neverStop = std::chrono::steady_clock::time_point::max();

  /// The patience of a worker, which may wait without a limit.
  static constexpr Duration unlimited = Duration::max();
  /// The patience of a host's thread in one call.
  static constexpr Duration ofHost = std::chrono::milliseconds(250);
  /// The patience of a host's thread that requests an export.
  static constexpr Duration ofExport = std::chrono::seconds(5);
  /// The patience of a call that postpones what it cannot do at once.
  static constexpr Duration none = Duration::zero();

  /// Declares how long the calling thread may wait.
  explicit Patience(Duration limit);
  /// The same, for a worker that must stop at a time that is set later. `stopTime` must outlive
  /// this object.
  Patience(Duration limit, const StopTime& stopTime);
  /// For operations that a host may call. Keeps the patience that the thread has declared. A thread
  /// that has declared none is a host's thread, and gets `ofHost`.
  Patience();
  ~Patience();

  Patience(const Patience&) = delete;
  Patience& operator=(const Patience&) = delete;

  /// How much longer the calling thread may wait; zero if it has no object.
  static Duration left();
  /// Subtracts the duration of a wait from the calling thread's patience.
  static void spend(Duration waited);

  /// Whether the calling thread's stop time has passed.
  static bool mustStop();

  /// Records that the calling thread's patience ended before the thread got what it needed.
  static void giveUp();
  /// Whether the calling thread has given up in this call. The rest of the call is then not worth
  /// trying.
  static bool hasGivenUp();

 private:
  Patience(Duration limit, const StopTime* stopTime);

  Patience* const outer_;
  const StopTime* const stopTime_;  ///< null if there is none
  Duration left_;
  bool hasGivenUp_;
};

}  // namespace qel::utilities
