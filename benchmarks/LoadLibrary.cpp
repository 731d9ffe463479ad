// Measures how long loading a shared library takes a program that uses none of it yet. Prints
// milliseconds.

#include <chrono>
#include <iostream>

#include <dlfcn.h>

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::cerr << "Usage: QelLoadLibrary FILE\n";
    return 2;
  }
  const auto begin = std::chrono::steady_clock::now();
  const void* const library = dlopen(arguments[1], RTLD_NOW | RTLD_LOCAL);
  const std::chrono::duration<double, std::milli> elapsed =
      std::chrono::steady_clock::now() - begin;
  if (library == nullptr) {
    std::cerr << dlerror() << '\n';
    return 1;
  }
  std::cout << elapsed.count() << '\n';
  return 0;
}
