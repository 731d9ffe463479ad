// Measures one figure per run, so that the measured process does no other work.

#include "benchmarks/Figures.h"

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

int main(int argumentCount, char** arguments) {
  using namespace qel::benchmarks;
  const std::vector<std::string> words(arguments + 1, arguments + argumentCount);
  const std::string figure = words.empty() ? "" : words[0];
  const auto number = [&](std::size_t index) {
    return words.size() > index ? std::atoi(words[index].c_str()) : 60;
  };
  const auto& ofSystem = figuresOfSystem();
  if (const auto found = ofSystem.find(figure); found != ofSystem.end()) {
    found->second();
  } else if (figure == "idle") {
    measureIdleClient(number(1), number(2));
  } else if (figure == "insert") {
    measureInsert();
  } else if (figure == "start" && words.size() == 2) {
    measureStart(words[1]);
  } else {
    std::cerr << "Usage: QelFigures idle [MINUTES [SPEED]] | insert | start DIRECTORY";
    for (const auto& [name, measure] : ofSystem) {
      std::cerr << " | " << name;
    }
    std::cerr << '\n';
    return 2;
  }
  return 0;
}
