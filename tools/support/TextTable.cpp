#include "tools/support/TextTable.h"

#include <algorithm>
#include <numeric>
#include <ostream>
#include <utility>

#include "tools/report/DisplayText.h"

namespace qel::support {
namespace {

constexpr std::size_t gap = 2;
constexpr std::size_t narrowestWrapped = 16;

std::string padding(std::size_t width, const std::string& text) {
  const auto taken = report::displayWidth(text);
  std::string blanks;
  blanks.assign(width > taken ? width - taken : 0, ' ');
  return blanks;
}

}  // namespace

TextTable::Cell::Cell(const std::string& content, Style look)
    : text(report::printable(content)), style(look) {}

TextTable::TextTable(std::vector<Column> columns) : columns_(std::move(columns)) {
  for (const auto& column : columns_) {
    naturalWidths_.push_back(report::displayWidth(column.title));
  }
}

void TextTable::add(std::vector<Cell> row) {
  for (std::size_t column = 0; column < row.size(); ++column) {
    naturalWidths_[column] =
        std::max(naturalWidths_[column], report::displayWidth(row[column].text));
  }
  rows_.push_back(std::move(row));
}

bool TextTable::fits(const Terminal& terminal) const {
  auto widths = naturalWidths_;
  return !terminal.width || fit(widths, *terminal.width);
}

void TextTable::print(std::ostream& output, const Terminal& terminal) {
  auto widths = naturalWidths_;
  if (terminal.width && !fit(widths, *terminal.width)) {
    printBlocks(output, terminal);
  } else {
    std::vector<Cell> titles;
    for (const auto& column : columns_) {
      titles.emplace_back(column.title, Style::Heading);
    }
    if (!std::exchange(hasTitles_, true)) {
      printRow(output, terminal, titles, widths);
    }
    for (const auto& row : rows_) {
      printRow(output, terminal, row, widths);
    }
  }
  rows_.clear();
}

/// Narrows the wrapped columns as far as necessary, the widest first. Returns false if the table
/// still does not fit.
bool TextTable::fit(std::vector<std::size_t>& widths, std::size_t available) const {
  auto total = std::accumulate(widths.begin(), widths.end(), gap * (widths.size() - 1));
  for (; total > available; --total) {
    std::size_t widest = widths.size();
    for (std::size_t column = 0; column < widths.size(); ++column) {
      if (columns_[column].kind == Column::Kind::Wrapped && widths[column] > narrowestWrapped &&
          (widest == widths.size() || widths[column] > widths[widest])) {
        widest = column;
      }
    }
    if (widest == widths.size()) {
      return false;
    }
    --widths[widest];
  }
  return true;
}

void TextTable::printRow(std::ostream& output, const Terminal& terminal,
                         const std::vector<Cell>& row,
                         const std::vector<std::size_t>& widths) const {
  std::vector<std::vector<std::string>> cells;
  std::size_t height = 1;
  for (std::size_t column = 0; column < row.size(); ++column) {
    cells.push_back(report::wrapped(row[column].text, std::max<std::size_t>(widths[column], 1)));
    height = std::max(height, cells.back().size());
  }
  for (std::size_t line = 0; line < height; ++line) {
    std::string text;
    std::string pending;  // spaces; dropped at the end of a line
    for (std::size_t column = 0; column < row.size(); ++column) {
      const std::string part = line < cells[column].size() ? cells[column][line] : "";
      const auto blanks = padding(widths[column], part);
      const bool right = columns_[column].kind == Column::Kind::Right;
      if (!part.empty()) {
        text += pending + (right ? blanks : "") + terminal.styled(part, row[column].style);
        pending.clear();
      }
      pending += (right && !part.empty() ? "" : blanks) + std::string(gap, ' ');
    }
    output << text << '\n';
  }
}

/// Prints a cell on the same line as its title, or indented on the next line if it fits only there.
void TextTable::printBlocks(std::ostream& output, const Terminal& terminal) const {
  std::size_t titleWidth = 0;
  for (const auto& column : columns_) {
    titleWidth = std::max(titleWidth, report::displayWidth(column.title));
  }
  const auto width = *terminal.width;
  const auto indent = titleWidth + gap < width / 2 ? titleWidth + gap : 0;
  for (const auto& row : rows_) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      const auto& [text, style] = row[column];
      if (text.empty()) {
        continue;
      }
      const auto& title = columns_[column].title;
      const auto taken = report::displayWidth(text);
      const bool alone = indent == 0 || (taken > width - indent && taken + gap <= width);
      output << terminal.styled(title, Style::Heading) << (alone ? "\n" : padding(indent, title));
      const auto left = alone ? std::min(gap, width - 1) : indent;
      std::string blanks(alone ? left : 0, ' ');
      for (const auto& line : report::wrapped(text, width - left)) {
        output << blanks << terminal.styled(line, style) << '\n';
        blanks.assign(left, ' ');
      }
    }
    output << '\n';
  }
}

}  // namespace qel::support
