#include "host/show/Columns.h"

#include <algorithm>
#include <ostream>

namespace Host {

bool Columns::isLine(std::size_t row) const { return std::binary_search(lines_.begin(), lines_.end(), row); }

std::vector<std::size_t> Columns::widths() const {
  std::vector<std::size_t> widths(align_.size());
  for (std::size_t row = 0; row < rows_.size(); ++row) {
    if (isLine(row)) continue;
    for (std::size_t i = 0; i < rows_[row].size(); ++i) widths[i] = std::max(widths[i], rows_[row][i].size());
  }
  return widths;
}

void Columns::print(std::ostream& out) const {
  auto const width = widths();
  for (std::size_t row = 0; row < rows_.size(); ++row) {
    std::string line;
    for (std::size_t i = 0; i < rows_[row].size(); ++i) {
      auto const& cell = rows_[row][i];
      std::string const pad(isLine(row) ? 0 : width[i] - cell.size(), ' ');
      line += (i == 0 ? "" : "  ") + (align_[i] == Align::left ? cell + pad : pad + cell);
    }
    line.erase(line.find_last_not_of(' ') + 1);
    out << line << '\n';
  }
}

}  // namespace Host
