#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "tools/support/Terminal.h"

namespace qel::support {

/// A table that fits into the width of the terminal. Wrapped columns are narrowed first. If that is
/// not enough, every row is printed as a block with a line for each cell.
class TextTable {
 public:
  struct Column {
    enum class Kind { Left, Right, Wrapped };

    std::string title;
    Kind kind = Kind::Left;
  };
  /// A cell. The constructor makes the text printable, because it may come from a database.
  struct Cell {
    Cell(const std::string& content, Style look = Style::Plain);
    Cell(const char* content, Style look = Style::Plain) : Cell(std::string(content), look) {}

    std::string text;
    Style style;
  };

  explicit TextTable(std::vector<Column> columns);

  /// The row must have a cell for each column.
  void add(std::vector<Cell> row);

  /// Whether the table can be printed as a table.
  bool fits(const Terminal& terminal) const;

  /// Prints the rows that were added since the last call. The first call also prints the titles.
  void print(std::ostream& output, const Terminal& terminal);

 private:
  bool fit(std::vector<std::size_t>& widths, std::size_t available) const;
  void printRow(std::ostream& output, const Terminal& terminal, const std::vector<Cell>& row,
                const std::vector<std::size_t>& widths) const;
  void printBlocks(std::ostream& output, const Terminal& terminal) const;

  const std::vector<Column> columns_;
  std::vector<std::size_t> naturalWidths_;  ///< of all rows that were added
  std::vector<std::vector<Cell>> rows_;     ///< not printed yet
  bool hasTitles_ = false;                  ///< whether the titles are printed
};

}  // namespace qel::support
