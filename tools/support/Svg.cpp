#include "tools/support/Svg.h"

#include <cmath>
#include <cstdlib>

#include "tools/support/Html.h"

namespace qel::support::svg {

using html::Attributes;

std::string begin(const std::string& title, double width, double height) {
  return html::tag("svg", {{"role", "img"},
                           {"aria-label", title},
                           {"viewBox", "0 0 " + coordinate(width) + ' ' + coordinate(height)}}) +
         '\n';
}

std::string line(const std::string& style, double x1, double x2, double y1, double y2) {
  return html::element("line", "",
                       Attributes{{"class", style},
                                  {"x1", coordinate(x1)},
                                  {"x2", coordinate(x2)},
                                  {"y1", coordinate(y1)},
                                  {"y2", coordinate(y2)}});
}

std::string label(const std::string& style, double x, double y, const std::string& text) {
  return html::element("text", text,
                       Attributes{{"class", style}, {"x", coordinate(x)}, {"y", coordinate(y)}}) +
         '\n';
}

std::string rectangle(const std::string& style, const Rectangle& place, const std::string& title) {
  return html::tag("rect", {{"class", style},
                            {"x", coordinate(place.x)},
                            {"y", coordinate(place.y)},
                            {"width", coordinate(place.width)},
                            {"height", coordinate(place.height)}}) +
         html::element("title", title) + "</rect>\n";
}

std::string coordinate(double value) {
  const auto tenths = std::llround(value * 10);
  return (tenths < 0 ? "-" : "") + std::to_string(std::llabs(tenths) / 10) + '.' +
         std::to_string(std::llabs(tenths) % 10);
}

}  // namespace qel::support::svg
