#pragma once

namespace qel {

/// Returns the only object of type `T` in the process. The object is created on first use and never
/// destroyed, because its users may outlive `main`. For each type, only one library may call this
/// function, because each calling library has its own object.
template <typename T>
T& singleton() {
  static auto* const instance = new T;
  return *instance;
}

}  // namespace qel
