#pragma once

#include <string>

/// Drawings as they stand in a page (SVG).
namespace qel::support::svg {

/// The beginning of a drawing, in its own units; "</svg>" ends it.
std::string begin(const std::string& title, double width, double height);

std::string line(const std::string& style, double x1, double x2, double y1, double y2);
std::string label(const std::string& style, double x, double y, const std::string& text);

struct Rectangle {
  double x, y, width, height;
};

/// `title` shows up under the pointer.
std::string rectangle(const std::string& style, const Rectangle& place, const std::string& title);

/// A coordinate with one decimal, whatever the locale.
std::string coordinate(double value);

}  // namespace qel::support::svg
