#pragma once

#include <iosfwd>
#include <string>
#include <vector>

namespace Host {

/// Rows of text in aligned columns. The first row is the heading.
class Columns {
 public:
  enum class Align { left, right };

  explicit Columns(std::vector<Align> align) : align_(std::move(align)) {}
  /// A row may have fewer cells than there are columns.
  void row(std::vector<std::string> cells) { rows_.push_back(std::move(cells)); }
  /// A line that is printed as it is, between the rows.
  void line(std::string text) { rows_.push_back({std::move(text)}), lines_.push_back(rows_.size() - 1); }
  void print(std::ostream& out) const;

 private:
  bool isLine(std::size_t row) const;
  std::vector<std::size_t> widths() const;

  std::vector<Align> align_;
  std::vector<std::vector<std::string>> rows_;
  std::vector<std::size_t> lines_;
};

}  // namespace Host
