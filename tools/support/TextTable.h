#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "tools/support/Terminal.h"

namespace qel::support {

/// A table that fits the terminal: a column that may be wrapped gives way first; where that is not
/// enough, every row becomes a block of lines, one for each cell.
class TextTable {
 public:
  struct Column {
    enum class Kind { Left, Right, Wrapped };

    std::string title;
    Kind kind = Kind::Left;
  };
  /// Its text may come from a database: it is made printable.
  struct Cell {
    Cell(const std::string& content, Style look = Style::Plain);
    Cell(const char* content, Style look = Style::Plain) : Cell(std::string(content), look) {}

    std::string text;
    Style style;
  };

  explicit TextTable(std::vector<Column> columns);

  /// As many cells as there are columns.
  void add(std::vector<Cell> row) { rows_.push_back(std::move(row)); }
  void print(std::ostream& output, const Terminal& terminal) const;

 private:
  std::vector<std::size_t> naturalWidths() const;
  bool fit(std::vector<std::size_t>& widths, std::size_t available) const;
  void printRow(std::ostream& output, const Terminal& terminal, const std::vector<Cell>& row,
                const std::vector<std::size_t>& widths) const;
  void printBlocks(std::ostream& output, const Terminal& terminal) const;

  const std::vector<Column> columns_;
  std::vector<std::vector<Cell>> rows_;
};

}  // namespace qel::support
