#pragma once

#include <chrono>

namespace qel::utilities {

/// How long the calling thread may wait, while the object lives, for something that others use,
/// such as a database file. All waits together count, not each by itself.
///
/// A thread without patience is never kept waiting, so a worker declares its patience where its
/// work begins. Inside another object, one can only shorten what that one leaves. Objects end in
/// the reverse order of their construction, on the thread that made them.
class Patience {
 public:
  /// How long waits take.
  using Duration = std::chrono::steady_clock::duration;

  /// Of a worker, which may wait until it is its turn.
  static constexpr Duration unlimited = Duration::max();
  /// Of a host's thread, in one call.
  static constexpr Duration ofHost = std::chrono::milliseconds(250);
  /// Of a host's thread that asks for an export.
  static constexpr Duration ofExport = std::chrono::seconds(5);
  /// Of a call that leaves what it cannot do at once to a later one.
  static constexpr Duration none = Duration::zero();

  /// Declares that the thread may wait for so long.
  explicit Patience(Duration limit);
  /// Leaves it at what the thread has declared. A thread that has declared nothing is one of the
  /// host's: for operations that a host may call.
  Patience();
  ~Patience();

  Patience(const Patience&) = delete;
  Patience& operator=(const Patience&) = delete;

  /// How much longer the calling thread may wait; zero without an object.
  static Duration left();
  /// Counts a wait of the calling thread.
  static void spend(Duration waited);

  /// The calling thread needed something and could wait no longer for it.
  static void giveUp();
  /// Whether it has given up in this call, so that the rest of the call is not worth trying.
  static bool hasGivenUp();

 private:
  Patience* const outer_;
  Duration left_;
  bool hasGivenUp_;
};

}  // namespace qel::utilities
