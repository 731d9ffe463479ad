#pragma once

#include <chrono>

namespace qel::utilities {

/// How long the calling thread may wait, while the object lives, for something that others use,
/// such as a database file. The limit applies to the sum of all waits.
///
/// A thread without patience never waits, so a worker declares its patience where its work begins.
/// An object inside another one can only shorten the time that the outer one leaves. Objects end in
/// the reverse order of their construction, on the thread that made them.
class Patience {
 public:
  /// The time of a wait.
  using Duration = std::chrono::steady_clock::duration;

  /// Of a worker, which may wait until it is its turn.
  static constexpr Duration unlimited = Duration::max();
  /// Of a host's thread, in one call.
  static constexpr Duration ofHost = std::chrono::milliseconds(250);
  /// Of a host's thread that asks for an export.
  static constexpr Duration ofExport = std::chrono::seconds(5);
  /// Of a call that does later what it cannot do at once.
  static constexpr Duration none = Duration::zero();

  /// Declares how long the thread may wait.
  explicit Patience(Duration limit);
  /// Keeps what the thread has declared. A thread that has declared nothing is a host's thread, and
  /// gets `ofHost`. For operations that a host may call.
  Patience();
  ~Patience();

  Patience(const Patience&) = delete;
  Patience& operator=(const Patience&) = delete;

  /// How much longer the calling thread may wait; zero without an object.
  static Duration left();
  /// Subtracts a wait of the calling thread.
  static void spend(Duration waited);

  /// Notes that the calling thread could wait no longer for something that it needed.
  static void giveUp();
  /// Whether it has given up in this call. The rest of the call is then not worth a try.
  static bool hasGivenUp();

 private:
  Patience* const outer_;
  Duration left_;
  bool hasGivenUp_;
};

}  // namespace qel::utilities
