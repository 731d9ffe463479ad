#pragma once

namespace qel {

/// The process's one object of its kind, made on first use and never destroyed: who uses it may
/// outlive `main`. To be called from one library only, since each would have an object of its own.
template <typename T>
T& singleton() {
  static auto* const instance = new T;
  return *instance;
}

}  // namespace qel
