#pragma once

namespace qel {

/// The only object of its type in the process. It is created on first use and never destroyed,
/// because its users may outlive `main`. Only one library may call this for a type, because each
/// library would have its own object.
template <typename T>
T& singleton() {
  static auto* const instance = new T;
  return *instance;
}

}  // namespace qel
