#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace Host {

/// Rows of text in aligned columns. The first row is the heading.
class Columns {
 public:
  enum class Align { left, right };

  explicit Columns(std::vector<Align> align) : align_(std::move(align)), widths_(align_.size()) {}
  /// A row may have fewer cells than there are columns.
  void row(std::vector<std::string> const& cells);
  /// A line that is printed as it is, between the rows.
  void line(std::string_view text);
  void print(std::ostream& out) const;

 private:
  void add(std::string_view cell);

  std::vector<Align> align_;
  std::vector<std::size_t> widths_;
  std::string text_;                 ///< All cells, one after the other: there can be very many.
  std::vector<std::uint32_t> ends_;  ///< Where each cell ends in it.
  std::vector<std::uint8_t> cells_;  ///< Of each row how many; 0: a line.
};

}  // namespace Host
