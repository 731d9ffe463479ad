#pragma once

#include <functional>
#include <utility>

namespace qel {

/// Runs an action when it is destroyed. The action must not throw. A guard can be moved but not
/// copied. A moved-from or default-constructed guard does nothing.
class [[nodiscard]] ScopeGuard {
 public:
  /// A guard without an action, or with the action `atEnd`, which may be empty.
  /// @{
  ScopeGuard() = default;
  explicit ScopeGuard(std::function<void()> atEnd) : atEnd_(std::move(atEnd)) {}
  /// @}
  /// Takes over the other guard's action. An assignment first runs the action of this guard.
  /// @{
  ScopeGuard(ScopeGuard&& other) noexcept : atEnd_(std::exchange(other.atEnd_, nullptr)) {}
  ScopeGuard& operator=(ScopeGuard&& other) noexcept {
    if (this != &other) {
      end();
      atEnd_ = std::exchange(other.atEnd_, nullptr);
    }
    return *this;
  }
  /// @}
  ScopeGuard(const ScopeGuard&) = delete;
  ScopeGuard& operator=(const ScopeGuard&) = delete;
  ~ScopeGuard() { end(); }

 private:
  void end() noexcept {
    if (atEnd_) {
      std::exchange(atEnd_, nullptr)();
    }
  }

  std::function<void()> atEnd_;
};

}  // namespace qel
