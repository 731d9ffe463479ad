#pragma once

#include <functional>
#include <utility>

namespace qel {

/// Runs an action when it is destroyed. Move-only; a moved-from or default-constructed guard does
/// nothing. The action must not throw.
class [[nodiscard]] ScopeGuard {
 public:
  /// With nothing to do, or with `atEnd`, which may be empty.
  /// @{
  ScopeGuard() = default;
  explicit ScopeGuard(std::function<void()> atEnd) : atEnd_(std::move(atEnd)) {}
  /// @}
  /// Takes the other's action over. An assignment first runs the action that this guard had.
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
