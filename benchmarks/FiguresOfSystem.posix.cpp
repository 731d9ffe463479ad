#include "benchmarks/Figures.h"

namespace qel::benchmarks {

const std::map<std::string, void (*)()>& figuresOfSystem() {
  static const std::map<std::string, void (*)()> figures{{"host-thread", measureHostThread},
                                                         {"memory", measurePassMemory}};
  return figures;
}

}  // namespace qel::benchmarks
